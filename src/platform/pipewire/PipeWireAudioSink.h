#pragma once

#include "base/HostClock.h"
#include "media/AudioSink.h"
#include "platform/pipewire/HeardBlock.h"
#include "platform/pipewire/PipeWireConnection.h"
#include "platform/pipewire/SoundRing.h"

#include <atomic>
#include <cstdint>
#include <set>

struct pw_core;
struct pw_stream;
struct spa_hook;

namespace keldra {

/// Sound for the default output of this session's PipeWire. Without a daemon it has no device; when one comes, or comes
/// back, what is written then is heard.
///
/// Threads: a thread keeps the connection and PipeWire's own fetches frames; they share the ring and a few atomics with
/// the caller, and nobody waits for another.
class PipeWireAudioSink final : public AudioSink {
public:
    /// Returns at once; connects later.
    PipeWireAudioSink();
    ~PipeWireAudioSink() override;

    bool hasDevice() const override { return m_hasDevice; }
    std::size_t write(const float* frames, std::size_t count) override { return m_ring.write(frames, count); }
    void start() override;
    void reset() override;
    std::optional<Position> position() const override;

private:
    void openStream(pw_core& core);
    void closeStream();
    void updateActivity();
    void updateDevices();
    /// PipeWire's thread asks for frames.
    void process();

    SoundRing m_ring;
    LastHeardBlock m_lastBlock;
    /// When PipeWire asked last, in nanoseconds of host time.
    std::atomic<std::int64_t> m_lastAsked = 0;
    std::atomic<bool> m_isStarted = false;
    std::atomic<bool> m_hasDevice = false;

    // The connection's thread's own.
    pw_stream* m_stream = nullptr;
    std::unique_ptr<spa_hook> m_streamHook;
    std::set<std::uint32_t> m_outputs;

    /// The first to go: nothing is called after it.
    PipeWireConnection m_connection;
};

} // namespace keldra
