#pragma once

#include <QString>

namespace keldra {

/// Short sounds that tell the user something. Main thread.
class SystemSounds {
public:
    virtual ~SystemSounds() = default;
    /// Begins that sound and returns at once; a sound that is unknown, or that nothing can play, is left out.
    virtual void play(const QString& name) = 0;
};

} // namespace keldra
