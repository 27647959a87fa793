#pragma once

#include "base/Executor.h"
#include "platform/Screens.h"
#include "platform/ShareableContent.h"
#include "platform/WindowList.h"

namespace keldra {

/// Screens that a test names.
class FixedScreens final : public Screens {
public:
    explicit FixedScreens(QList<Screen> screens) : current(std::move(screens)) {}
    QList<Screen> screens() const override { return current; }
    QList<Screen> current;
};

/// Windows that a test names.
class FixedWindows final : public WindowList {
public:
    QList<WindowInfo> windows() const override { return {}; }
    std::optional<QRectF> liveFrame(std::uint32_t) const override { return live; }
    std::optional<QRectF> live;
};

/// Shareable content that a test names.
class FixedShareableContent final : public ShareableContent {
public:
    explicit FixedShareableContent(Executor& mainQueue) : m_mainQueue(mainQueue) {}
    void current(Completion<ShareableContentSnapshot> done) override {
        m_mainQueue.post([answer = answer, done = std::move(done)] { done(answer); });
    }
    Result<ShareableContentSnapshot> answer;

private:
    Executor& m_mainQueue;
};

} // namespace keldra
