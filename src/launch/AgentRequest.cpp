#include "launch/AgentRequest.h"

#include "cli/CommandLine.h"

#include <QDir>
#include <QFileInfo>

namespace keldra {

std::optional<AgentRequest> readAgentRequest(const QStringList& words, const QString& folder) {
    if (words.isEmpty())
        return AgentRequest{};
    if (words.size() > 1 || isCommandLine(words))
        return std::nullopt;
    const QString& word = words.first();
    if (word == u"--open")
        return AgentRequest{{}, true};
    const QUrl url(word);
    const QFileInfo file(url.isLocalFile() ? url.toLocalFile() : QDir(folder).absoluteFilePath(word));
    if (!file.isFile())
        return std::nullopt;
    return AgentRequest{QUrl::fromLocalFile(file.absoluteFilePath()), false};
}

} // namespace keldra
