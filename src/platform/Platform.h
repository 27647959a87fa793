#pragma once

#include "base/HostClock.h"
#include "platform/ScreenStream.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"
#include "platform/WindowList.h"

#include <memory>

namespace keldra {

/// What a desktop gives us, as launch/ put it together. The members live as long as the program.
struct Platform {
    std::shared_ptr<HostClock> clock;
    std::shared_ptr<Screens> screens;
    std::shared_ptr<WindowList> windows;
    std::shared_ptr<ShareableContent> shareableContent;
    ScreenStreamFactory makeScreenStream;
};

} // namespace keldra
