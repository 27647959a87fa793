#include "doubles/VirtualTime.h"
#include "platform/pipewire/AudioSinkSounds.h"
#include "platform/pipewire/ShortSound.h"

#include <algorithm>
#include <cmath>
#include <gtest/gtest.h>

namespace keldra {
namespace {

using namespace std::chrono_literals;

TEST(ShortSoundTest, IsHeardAndHurtsNobody) {
    for (const char* name : {"Tink", "Hero"}) {
        const std::vector<float> sound = shortSound(name);
        ASSERT_FALSE(sound.empty()) << name;
        EXPECT_EQ(sound.size() % AudioSink::channelCount, 0U);
        EXPECT_LT(sound.size() / AudioSink::channelCount, std::size_t(AudioSink::sampleRate)) << "short";
        const auto loud = std::ranges::max(sound, {}, [](float value) { return std::abs(value); });
        EXPECT_NEAR(std::abs(loud), 0.25, 1e-6) << name;
        EXPECT_NEAR(sound.front(), 0, 1e-6) << name;
        EXPECT_NEAR(sound.back(), 0, 1e-4) << name;
        float steepest = 0;
        for (std::size_t i = AudioSink::channelCount; i < sound.size(); ++i)
            steepest = std::max(steepest, std::abs(sound[i] - sound[i - AudioSink::channelCount]));
        EXPECT_LT(steepest, 0.3F) << name << " clicks";
    }
    EXPECT_TRUE(shortSound("Basso").empty());
}

/// A device with room for a fifth of a second that plays while time goes on.
class PlayingSink final : public AudioSink {
public:
    PlayingSink(VirtualTime& time, std::vector<float>& heard, int& living) : m_heard(heard), m_living(living) {
        ++m_living;
        m_playing = time.scheduler().every(10ms, [this] { play(); });
    }
    ~PlayingSink() override { --m_living; }

    bool hasDevice() const override { return true; }
    std::size_t write(const float* frames, std::size_t count) override {
        const std::size_t taken = std::min(count, sampleRate / 5 - m_waiting.size() / channelCount);
        m_waiting.insert(m_waiting.end(), frames, frames + taken * channelCount);
        return taken;
    }
    void start() override { m_isStarted = true; }
    void reset() override {
        m_isStarted = false;
        m_waiting.clear();
    }
    std::optional<Position> position() const override { return std::nullopt; }

private:
    void play() {
        const auto samples = std::ptrdiff_t(std::min<std::size_t>(m_waiting.size(), sampleRate / 100 * channelCount));
        if (!m_isStarted)
            return;
        m_heard.insert(m_heard.end(), m_waiting.begin(), m_waiting.begin() + samples);
        m_waiting.erase(m_waiting.begin(), m_waiting.begin() + samples);
    }

    std::vector<float>& m_heard;
    int& m_living;
    std::vector<float> m_waiting;
    bool m_isStarted = false;
    Timer m_playing;
};

class AudioSinkSoundsTest : public ::testing::Test {
protected:
    VirtualTime time;
    std::vector<float> heard;
    int living = 0;
    int made = 0;
    AudioSinkSounds sounds{[this] { return ++made, std::make_unique<PlayingSink>(time, heard, living); },
                           time.scheduler()};
};

TEST_F(AudioSinkSoundsTest, ASoundLongerThanTheSinksRoomIsHeardWhole) {
    sounds.play("Hero");
    time.advance(2s);
    EXPECT_TRUE(heard == shortSound("Hero"));
    time.advance(2s);
    EXPECT_EQ(living, 0) << "the device is let go";
}

} // namespace
} // namespace keldra
