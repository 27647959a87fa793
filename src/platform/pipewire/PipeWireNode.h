#pragma once

#include <cstdint>
#include <string>

namespace keldra {

/// What PipeWire says about a node.
struct PipeWireNode {
    std::uint32_t id = 0;
    /// Never given to another one.
    std::string serial;
    std::string mediaClass;
    /// Of cameras "Camera"; often empty.
    std::string mediaRole;
    /// The same whenever that device is connected.
    std::string name;
    /// For people; empty where it has none.
    std::string description;
    /// Which of several the desktop likes best.
    int sessionPriority = 0;
};

} // namespace keldra
