#include "async/MainQueue.h"
#include "async/MainScheduler.h"
#include "base/Log.h"
#include "cli/CommandLine.h"
#include "identity/Identity.h"
#include "launch/AgentProgram.h"
#include "launch/DesktopPlatform.h"
#include "platform/qt/QtApplication.h"

#include <QCoreApplication>
#include <QDir>

#include <clocale>
#include <csignal>
#include <cstdlib>
#include <cstring>
#include <langinfo.h>
#include <malloc.h>

namespace {

/// Qt reads and writes everything as UTF-8 and complains on standard error about any other locale.
void ensureUtf8Locale() {
    std::setlocale(LC_ALL, "");
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        setenv("LC_ALL", "C.UTF-8", 1);
}

QStringList wordsOf(int argc, char** argv) {
    QStringList words;
    for (int i = 1; i < argc; ++i)
        words.append(QString::fromLocal8Bit(argv[i]));
    return words;
}

keldra::AnalyticsAccount analyticsAccount() {
    using namespace keldra::identity;
    return {QString::fromUtf8(analyticsKey),
            {{QStringLiteral("US"), QString::fromUtf8(analyticsHostUS)},
             {QStringLiteral("EU"), QString::fromUtf8(analyticsHostEU)},
             {QStringLiteral("DEV"), QString::fromUtf8(analyticsHostDEV)}},
            QString::fromUtf8(analyticsHostSH)};
}

int runSubcommand(int& argc, char** argv, const QStringList& words) {
    QCoreApplication qtApplication(argc, argv);
    QCoreApplication::setApplicationVersion(QString::fromUtf8(keldra::identity::version));
    // A reader that closes the pipe early is an error to be told, not the end of a recording.
    std::signal(SIGPIPE, SIG_IGN);
    keldra::setLogStream(keldra::LogStream::standardError);

    const auto clock = std::make_shared<keldra::SystemHostClock>();
    const auto scheduler = std::make_shared<keldra::MainScheduler>();
    keldra::MainQueue mainQueue(scheduler);
    keldra::QtApplication application(QCoreApplication::applicationVersion(),
                                      QString::fromUtf8(keldra::identity::build));
    const keldra::CommandContext context{clock,       scheduler,
                                         mainQueue,   [&] { return keldra::makeDesktopPlatform(clock, mainQueue); },
                                         application, analyticsAccount()};

    auto task = keldra::runCommandLine(context, words);
    task.then([&mainQueue](int status) { mainQueue.post([status] { QCoreApplication::exit(status); }); });
    return QCoreApplication::exec();
}

/// What is as large as a picture goes back to the system when it is let go of, and leaves no holes in the heap.
void keepPicturesOffTheHeap() {
    mallopt(M_MMAP_THRESHOLD, 1 << 18);
}

} // namespace

int main(int argc, char** argv) {
    ensureUtf8Locale();
    keepPicturesOffTheHeap();
    const QStringList words = wordsOf(argc, argv);
    if (const auto request = keldra::readAgentRequest(words, QDir::currentPath()))
        return keldra::runAgent(argc, argv, *request, analyticsAccount());
    return runSubcommand(argc, argv, words);
}
