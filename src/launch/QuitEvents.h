#pragma once

#include <QObject>

#include <functional>

namespace keldra {

/// Tells when the desktop wants the program to end: at a logout, or when its connection to the session ends. Qt itself
/// then ends nothing any more. Made after the QGuiApplication and gone before it.
class QuitEvents : public QObject {
public:
    explicit QuitEvents(std::function<void()> onQuit);
    bool eventFilter(QObject* receiver, QEvent* event) override;

private:
    std::function<void()> m_onQuit;
};

} // namespace keldra
