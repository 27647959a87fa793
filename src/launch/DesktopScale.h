#pragma once

#include <QByteArray>

#include <map>
#include <string>

namespace keldra {

/// Tells Qt to scale everything by one factor, and by nothing else, if its application object is made while this lives.
/// Afterwards the environment is what it was, so that programs which we start scale as their user wants.
class DesktopScale {
public:
    /// Pixels per point.
    explicit DesktopScale(double factor);
    ~DesktopScale();
    DesktopScale(const DesktopScale&) = delete;
    DesktopScale& operator=(const DesktopScale&) = delete;

private:
    void set(const std::string& name, const QByteArray& value);

    /// Null where there was no such variable.
    std::map<std::string, QByteArray> m_before;
};

} // namespace keldra
