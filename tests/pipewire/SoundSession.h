#pragma once

#include "doubles/ChildProcess.h"
#include "doubles/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <optional>
#include <string>

namespace keldra::test {

/// A session of PipeWire of its own, with no daemon in it at first.
class SoundSession : public testing::Test {
protected:
    SoundSession() {
        if (const char* earlier = std::getenv("XDG_RUNTIME_DIR"))
            m_earlier = earlier;
        setenv("XDG_RUNTIME_DIR", m_folder.path().c_str(), 1);
    }
    ~SoundSession() override {
        stopDaemon();
        setenv("XDG_RUNTIME_DIR", m_earlier.c_str(), 1);
    }

    void startDaemon() {
        m_daemon.emplace(std::vector<std::string>{KELDRA_SOUND_SERVER});
        ASSERT_EQ(m_daemon->readLine(), "up");
    }
    void stopDaemon() {
        if (m_daemon)
            m_daemon->terminate();
        m_daemon.reset();
    }

private:
    const TemporaryFolder m_folder;
    std::string m_earlier;
    std::optional<ChildProcess> m_daemon;
};

} // namespace keldra::test
