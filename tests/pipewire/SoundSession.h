#pragma once

#include "doubles/ChildProcess.h"
#include "doubles/TemporaryFolder.h"

#include <cstdlib>
#include <gtest/gtest.h>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace keldra::test {

/// A session of its own, with no PipeWire daemon in it at first.
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

    /// A device that is there when this returns; it goes with the object.
    static std::unique_ptr<ChildProcess> plugInMicrophone(const std::string& name,
                                                          std::vector<std::string> options = {}) {
        return plugIn(KELDRA_TEST_MICROPHONE, name, std::move(options));
    }
    static std::unique_ptr<ChildProcess> plugInCamera(const std::string& name, std::vector<std::string> options = {}) {
        return plugIn(KELDRA_TEST_CAMERA, name, std::move(options));
    }

private:
    static std::unique_ptr<ChildProcess> plugIn(const char* program, const std::string& name,
                                                std::vector<std::string> options) {
        options.insert(options.begin(), {program, "--name", name, "--description", "The " + name});
        auto device = std::make_unique<ChildProcess>(std::move(options));
        EXPECT_EQ(device->readLine(), "up");
        return device;
    }

    const TemporaryFolder m_folder;
    std::string m_earlier;
    std::optional<ChildProcess> m_daemon;
};

} // namespace keldra::test
