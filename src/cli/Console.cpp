#include "cli/Console.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <unistd.h>

namespace keldra {
namespace {

bool isErrorTerminal() {
    return isatty(STDERR_FILENO) != 0;
}

void writeError(const QString& text) {
    std::fputs(text.toLocal8Bit().constData(), stderr);
    std::fflush(stderr);
}

} // namespace

bool writeResult(const QByteArray& text) {
    const bool isWritten =
        std::fwrite(text.constData(), 1, std::size_t(text.size()), stdout) == std::size_t(text.size());
    return std::fflush(stdout) == 0 && isWritten;
}

void writeNotice(const QString& line) {
    writeError(line + u'\n');
}

ProgressDisplay::ProgressDisplay(bool isQuiet) : m_isQuiet(isQuiet), m_isTerminal(isErrorTerminal()) {}

ProgressDisplay::~ProgressDisplay() {
    if (m_isTerminal && m_lastPercent >= 0)
        writeError(QStringLiteral("\n"));
}

void ProgressDisplay::show(double progress) {
    const int percent = int(std::lround(std::clamp(progress, 0.0, 1.0) * 100));
    if (m_isQuiet || percent == m_lastPercent)
        return;
    m_lastPercent = percent;
    if (!m_isTerminal) {
        writeError(QStringLiteral("progress %1\n").arg(percent / 100.0, 0, 'f', 2));
        return;
    }
    constexpr int barWidth = 40;
    const int filled = percent * barWidth / 100;
    const QString bar = QString(filled, QChar(0x2588)) + QString(barWidth - filled, QChar(0x2591));
    writeError(QStringLiteral("\r%1 %2%").arg(bar).arg(percent, 3));
}

StatusLine::StatusLine() : m_isTerminal(isErrorTerminal()) {}

StatusLine::~StatusLine() {
    if (m_isDirty)
        writeError(QStringLiteral("\n"));
}

void StatusLine::show(const QString& text) {
    if (!m_isTerminal)
        return;
    m_isDirty = true;
    writeError(QStringLiteral("\r\033[K") + text);
}

} // namespace keldra
