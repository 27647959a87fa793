// keldra_play: plays what the editor would open for a file, and says how well it went. See `usage`.

#include "PlayRun.h"
#include "async/CoTry.h"
#include "async/MainQueue.h"
#include "async/MainScheduler.h"
#include "cli/Arguments.h"
#include "cli/InputProject.h"
#include "platform/pipewire/PipeWireAudioSink.h"
#include "platform/qt/QtApplication.h"

#include <QGuiApplication>

#include <algorithm>
#include <cstdio>
#include <cstring>

using namespace keldra;
using namespace keldra::play;

namespace {

constexpr const char* usage =
    "keldra_play INPUT [--null] [--rate R] [--reverse] [--from S] [--seconds S] [--seek-test N]\n"
    "  --null       opens no window and takes pictures at 60 Hz all the same\n"
    "  --seek-test  times N random exact seeks instead of playing\n";

struct Command {
    QString input;
    bool hasWindow = true;
    PlayOptions options;
};

Result<Command> parseCommand(const QStringList& words) {
    TRY_LET(const Arguments arguments, parseArguments(words, {{"--null", OptionValue::none},
                                                              {"--reverse", OptionValue::none},
                                                              {"--rate", OptionValue::required},
                                                              {"--from", OptionValue::required},
                                                              {"--seconds", OptionValue::required},
                                                              {"--seek-test", OptionValue::required}}));
    if (arguments.positional.size() != 1)
        return fail(usageError(QStringLiteral("one movie or project file, please")));
    Command command{arguments.positional.first(), !arguments.has("--null"), {}};
    if (arguments.has("--rate")) {
        TRY_LET(command.options.rate, parseNumber("--rate", *arguments.value("--rate")));
    }
    if (arguments.has("--reverse"))
        command.options.rate = -command.options.rate;
    if (command.options.rate == 0)
        return fail(usageError(QStringLiteral("--rate must not be 0")));
    if (arguments.has("--from")) {
        TRY_LET(command.options.from, parseNumber("--from", *arguments.value("--from")));
    }
    if (arguments.has("--seconds")) {
        TRY_LET(command.options.seconds, parseNumber("--seconds", *arguments.value("--seconds")));
    }
    if (arguments.has("--seek-test")) {
        TRY_LET(const double count, parseNumber("--seek-test", *arguments.value("--seek-test")));
        command.options.seekCount = int(count);
    }
    return command;
}

QCoro::Task<Result<std::shared_ptr<PlayerItem>>> openItem(InputProject& input, QString path) {
    CO_TRY_LET(EditorProject project, co_await input.load(path));
    CO_TRY_LET(const EditorCompositionOutput output, co_await input.build(std::move(project)));
    co_return std::make_shared<PlayerItem>(output.composition, output.videoComposition, output.audioMix);
}

int run(const Command& command) {
    const auto clock = std::make_shared<SystemHostClock>();
    const auto scheduler = std::make_shared<MainScheduler>();
    MainQueue mainQueue(scheduler);
    QtApplication application(QStringLiteral("0"), QStringLiteral("0"));
    const CommandContext context{
        clock,       scheduler,
        mainQueue,   [] { return Result<Platform>(fail(Error{"Platform", 1, "no desktop is needed", {}})); },
        application, {}};
    InputProject input(context);

    std::optional<PictureWindow> window;
    if (command.hasWindow) {
        window.emplace();
        window->setTitle(command.input);
        window->resize(1280, 720);
        window->show();
    }
    // Connects while the file is opened.
    auto sink = std::make_unique<PipeWireAudioSink>();
    std::unique_ptr<PlayRun> playing;
    int status = 0;
    auto opening = openItem(input, command.input);
    opening.then([&](Result<std::shared_ptr<PlayerItem>> item) {
        if (!item) {
            std::fprintf(stderr, "keldra_play: %s\n", item.error().message.c_str());
            status = 1;
            mainQueue.post([] { QCoreApplication::quit(); });
            return;
        }
        playing = std::make_unique<PlayRun>(mainQueue, clock, std::move(sink), *item, window ? &*window : nullptr,
                                            command.options);
        playing->start([&status](bool isWell) {
            status = isWell ? 0 : 1;
            QCoreApplication::quit();
        });
    });
    QCoreApplication::exec();
    return status;
}

} // namespace

int main(int argc, char** argv) {
    const bool hasWindow =
        std::none_of(argv, argv + argc, [](const char* word) { return !std::strcmp(word, "--null"); });
    std::unique_ptr<QCoreApplication> application;
    if (hasWindow)
        application = std::make_unique<QGuiApplication>(argc, argv);
    else
        application = std::make_unique<QCoreApplication>(argc, argv);
    const auto command = parseCommand(QCoreApplication::arguments().mid(1));
    if (!command) {
        std::fprintf(stderr, "keldra_play: %s\n%s", command.error().message.c_str(), usage);
        return 2;
    }
    return run(*command);
}
