#pragma once

#include "base/Result.h"

#include <QList>
#include <QString>
#include <QUrl>

#include <chrono>
#include <cstdint>
#include <functional>

namespace keldra {

/// Another copy of this program in the same login session.
struct RunningApplication {
    /// Names this one copy, and no other ever after.
    QString handle;
    std::int64_t processID = 0;
    /// Whether it goes by this program's earlier name, and so knows nothing of what is asked of copies here.
    bool hasEarlierName = false;
    friend bool operator==(const RunningApplication&, const RunningApplication&) = default;
};

/// What a copy does for others that start later. Each runs on main.
struct ApplicationRequests {
    /// Makes way for the newer copy and answers true; or answers false, shows what it has, and stays.
    std::function<bool()> makeWay;
    /// Shows what it has.
    std::function<void()> activate;
    std::function<void(QUrl)> openFile;
    /// Lets the user pick what to open.
    std::function<void()> openPicker;
};

/// The copies of this program in this login session, found by a name that one of them owns; subcommands are none.
///
/// Threads: main; completions run on main.
/// Errors:  no answer, or no way to reach anybody. Every wait has an end.
class RunningApplications {
public:
    virtual ~RunningApplications() = default;

    /// All but this one.
    virtual void others(Completion<QList<RunningApplication>> done) = 0;
    /// What each of them has as ApplicationRequests.
    virtual void makeWay(const RunningApplication& application, Completion<bool> done) = 0;
    virtual void openFile(const RunningApplication& application, QUrl file, Completion<void> done) = 0;
    virtual void openPicker(const RunningApplication& application, Completion<void> done) = 0;

    /// Asks its process to end.
    virtual void terminate(const RunningApplication& application) = 0;
    /// Ends its process.
    virtual void forceTerminate(const RunningApplication& application) = 0;
    /// Answers when it has gone, true, or when `patience` is over, false.
    virtual void waitForEnd(const RunningApplication& application, std::chrono::milliseconds patience,
                            Completion<bool> done) = 0;

    /// Becomes the copy that others find; answers false when another one was faster. From then on `requests` are
    /// served, as long as this object lives.
    virtual void claim(ApplicationRequests requests, Completion<bool> done) = 0;
};

} // namespace keldra
