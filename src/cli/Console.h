#pragma once

#include <QByteArray>
#include <QString>

namespace keldra {

/// Writes a result to standard output, whole. Answers false when nobody takes it (a closed pipe, a full disk).
[[nodiscard]] bool writeResult(const QByteArray& text);

/// Writes one line to standard error.
void writeNotice(const QString& line);

/// Shows how far a command is, on standard error: a bar that redraws itself on a terminal, else lines such as
/// "progress 0.42".
class ProgressDisplay {
public:
    explicit ProgressDisplay(bool isQuiet);
    /// Leaves the terminal on a fresh line.
    ~ProgressDisplay();
    /// 0 to 1; nothing is written while the shown number stays the same.
    void show(double progress);

private:
    bool m_isQuiet;
    bool m_isTerminal;
    int m_lastPercent = -1;
};

/// A line on standard error that is written over by the next one; nothing when that is not a terminal.
class StatusLine {
public:
    StatusLine();
    ~StatusLine();
    /// Whether anybody sees it.
    bool isShown() const { return m_isTerminal; }
    void show(const QString& text);

private:
    bool m_isTerminal;
    bool m_isDirty = false;
};

} // namespace keldra
