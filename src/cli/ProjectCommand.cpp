#include "cli/ProjectCommand.h"

#include "async/CoTry.h"
#include "cli/CommandErrors.h"
#include "cli/Console.h"
#include "cli/InputProject.h"
#include "project/ProjectJson.h"

namespace keldra {

QCoro::Task<Result<void>> runProject(const CommandContext& context, QStringList words) {
    CO_TRY_LET(const Arguments arguments, parseArguments(words, {}));
    if (arguments.positional.size() != 1)
        co_return fail(usageError(QStringLiteral("project needs one movie or project file")));
    InputProject input(context);
    CO_TRY_LET(const EditorProject project, co_await input.load(arguments.positional.first()));
    CO_TRY_LET(QByteArray json, encodeProject(project));
    if (!json.endsWith('\n'))
        json += '\n';
    if (!writeResult(json))
        co_return fail(unwritableOutput());
    co_return {};
}

} // namespace keldra
