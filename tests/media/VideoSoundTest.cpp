// A video clip's sound: 48 kHz stereo blocks that follow the positions,
// resampled from the file's 44.1 kHz sine with its pitch and level, the same
// after a jump as when played through, and scaled by "volume".
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "MediaTestSupport.h"
#include "core/MVNAudioBlock.h"
#include "core/MVNFrame.h"

using namespace Morvane;
using MediaTest::makeClip;
using MediaTest::mediaPath;

namespace {

// The samples of the left channel over positions [first, last).
std::vector<float> leftChannel(MVNProducer* clip, int first, int last) {
    std::vector<float> out;
    for (int position = first; position < last; ++position) {
        MVNFrame* block = nullptr;
        if (clip->getAudio(position, nullptr, &block) != 0) {
            ADD_FAILURE() << "no sound at " << position;
            return out;
        }
        EXPECT_EQ(block->frequency(), 48000);
        EXPECT_EQ(block->channels(), 2);
        EXPECT_EQ(block->samples(), 1920) << "a 25 fps position holds 1920 samples";
        const float* s = MVNAudioBlock::samples(block);
        for (int i = 0; i < block->samples(); ++i) out.push_back(s[2 * i]);
        MVNFrame::pushBackPool(block);
    }
    return out;
}

double rms(const std::vector<float>& s) {
    double sum = 0;
    for (float v : s) sum += double(v) * v;
    return s.empty() ? 0 : std::sqrt(sum / s.size());
}

// Pitch from rising zero crossings.
double pitch(const std::vector<float>& s) {
    int first = -1, last = -1, crossings = 0;
    for (size_t i = 1; i < s.size(); ++i) {
        if (s[i - 1] < 0 && s[i] >= 0) {
            if (first < 0) first = int(i);
            last = int(i);
            ++crossings;
        }
    }
    return crossings > 1 ? (crossings - 1) * 48000.0 / (last - first) : 0;
}

class VideoSound : public ::testing::Test {
protected:
    static void SetUpTestSuite() { MediaTest::loadMediaModule(); }
    void TearDown() override { destroyService(id); }
    std::string id;
    MVNProfile profile{160, 90, 25, 1};
};

}  // namespace

TEST_F(VideoSound, TheSineComesOutAtItsPitchAndLevel) {
    MVNProducer* clip = makeClip(profile, "codec.video", mediaPath("gop12_25.mp4"), id);
    ASSERT_NE(clip, nullptr);
    std::vector<float> second = leftChannel(clip, 25, 50);
    // ffmpeg's sine is 1/8 of full scale: an RMS of 0.125 / sqrt(2).
    EXPECT_NEAR(rms(second), 0.0884, 0.003);
    EXPECT_NEAR(pitch(second), 1000.0, 1.0);
}

TEST_F(VideoSound, AJumpBackGivesWhatPlayingThroughGave) {
    MVNProducer* clip = makeClip(profile, "codec.video", mediaPath("gop12_25.mp4"), id);
    ASSERT_NE(clip, nullptr);
    std::vector<float> through = leftChannel(clip, 0, 60);
    std::vector<float> again = leftChannel(clip, 40, 42);
    ASSERT_EQ(again.size(), 2u * 1920);
    // Where the resampler starts over it may differ in its last bits.
    double worst = 0;
    for (size_t i = 0; i < again.size(); ++i) worst = std::max(worst, double(std::fabs(again[i] - through[40 * 1920 + i])));
    EXPECT_LT(worst, 0.01);
}

TEST_F(VideoSound, VolumeScalesTheLevelAndAFileWithoutSoundGivesNone) {
    MVNProducer* clip = makeClip(profile, "codec.video", mediaPath("gop12_25.mp4"), id);
    ASSERT_NE(clip, nullptr);
    clip->setDouble("volume", 0.25);
    EXPECT_NEAR(rms(leftChannel(clip, 25, 35)), 0.0884 * 0.25, 0.002);

    std::string silentId;
    MVNProducer* silent = makeClip(profile, "codec.video", mediaPath("silent.mp4"), silentId);
    ASSERT_NE(silent, nullptr);
    MVNFrame* block = nullptr;
    EXPECT_EQ(silent->getAudio(10, nullptr, &block), -1);
    destroyService(silentId);
}
