#pragma once

#include "platform/Pointer.h"

#include <utility>

namespace keldra {

/// A pointer that a test moves and presses.
class ScriptedPointer final : public Pointer {
public:
    QPointF location() override { return place; }
    unsigned takePressedButtons() override { return held | std::exchange(m_latched, 0); }

    /// Pressed and let go of between two looks.
    void click(unsigned button = 1) { m_latched |= button; }

    QPointF place;
    unsigned held = 0;

private:
    unsigned m_latched = 0;
};

} // namespace keldra
