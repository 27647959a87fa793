#pragma once

#include "base/Executor.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"
#include "platform/WindowList.h"

#include <memory>

namespace keldra {

/// Every monitor and every window on the screen may be recorded here.
class X11ShareableContent final : public ShareableContent {
public:
    X11ShareableContent(std::shared_ptr<Screens> screens, std::shared_ptr<WindowList> windows, Executor& mainQueue);
    void current(Completion<ShareableContentSnapshot> done) override;

private:
    std::shared_ptr<Screens> m_screens;
    std::shared_ptr<WindowList> m_windows;
    Executor& m_mainQueue;
};

} // namespace keldra
