#pragma once

#include "platform/DisplayCapture.h"
#include "platform/ScreenStream.h"

#include <functional>
#include <memory>

namespace keldra {

/// A screen stream or a display capture with what it is to deliver. Threads and errors as theirs.
struct FrameSource {
    std::function<void(Executor& queue, FrameSink sink, Completion<void> done)> start;
    std::function<void(Completion<void> done)> stop;

    template <typename Capture, typename Configuration>
    static FrameSource of(std::unique_ptr<Capture> capture, Configuration configuration) {
        return of(std::shared_ptr<Capture>(std::move(capture)), configuration);
    }
    template <typename Capture, typename Configuration>
    static FrameSource of(const std::shared_ptr<Capture>& shared, Configuration configuration) {
        return {[shared, configuration](Executor& queue, FrameSink sink, Completion<void> done) {
                    shared->start(configuration, queue, std::move(sink), std::move(done));
                },
                [shared](Completion<void> done) { shared->stop(std::move(done)); }};
    }
};

} // namespace keldra
