#pragma once

#include <QObject>
#include <QString>

namespace keldra {

/// What the program and the machine it runs on say about themselves. What is not known is empty.
struct ApplicationFacts {
    QString version; ///< dotted decimal
    QString build;
    QString osName;
    QString osVersion;
    /// A language code, e.g. "en".
    QString locale;
    QString deviceModel;

    friend bool operator==(const ApplicationFacts&, const ApplicationFacts&) = default;
};

/// The program itself, as the desktop sees it. Main thread.
class Application : public QObject {
    Q_OBJECT

public:
    virtual ApplicationFacts facts() const = 0;
    /// Ends the main loop, and with it the program, when the present turn is over.
    virtual void terminate() = 0;

Q_SIGNALS:
    /// One of our windows came to the front after none of them was there.
    void didBecomeActive();
    /// The last turn of the main loop: nothing that is posted now still runs.
    void willTerminate();
};

} // namespace keldra
