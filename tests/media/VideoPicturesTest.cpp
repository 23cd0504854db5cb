// A video clip shows, at every position of a 25 fps timeline, the very
// picture the ffmpeg command shows at that time, whatever the file's own
// rate, after jumps both ways; an animation loops; a still stays.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>

#include "MediaTestSupport.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using MediaTest::makeClip;
using MediaTest::mediaPath;

namespace {

struct Difference {
    int max = 0;
    double mean = 0;
};

Difference compare(const uint8_t* a, const uint8_t* b, size_t bytes) {
    Difference d;
    long long sum = 0;
    for (size_t i = 0; i < bytes; ++i) {
        int diff = std::abs(int(a[i]) - int(b[i]));
        d.max = std::max(d.max, diff);
        sum += diff;
    }
    d.mean = bytes ? double(sum) / bytes : 0;
    return d;
}

struct Source {
    const char* file;  // made by make-media.sh, with its reference beside it
    int positions;     // 25 fps positions that start inside its 4 s
};

class VideoPictures : public ::testing::TestWithParam<Source> {
protected:
    static void SetUpTestSuite() { MediaTest::loadMediaModule(); }
    void TearDown() override { destroyService(id); }
    std::string id;
    MVNProfile profile{160, 90, 25, 1};
};

}  // namespace

TEST_P(VideoPictures, TwentyRandomPositionsShowWhatFfmpegShowsThen) {
    const std::string file = GetParam().file;
    MVNProducer* clip = makeClip(profile, "codec.video", mediaPath(file + ".mp4"), id);
    ASSERT_NE(clip, nullptr);
    ASSERT_EQ(clip->getInt32("width", 0), 160);
    ASSERT_EQ(clip->getInt32("height", 0), 90);
    const size_t bytes = 160 * 90 * 4;
    std::vector<uint8_t> reference = MediaTest::readBytes(mediaPath(file + ".25fps.bgra"));
    ASSERT_GE(reference.size(), bytes * 100);
    // Jumps forward and back of every size, over key frames and B-frames,
    // and a few steps in turn.
    std::mt19937 random(13);
    std::vector<int> route;
    for (int i = 0; i < 20; ++i) route.push_back(static_cast<int>(random() % 99));
    route.insert(route.begin() + 10, {route[9] + 1, route[9] + 2, route[9] - 1});
    for (int position : route) {
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip->getImage(position, &frame), 0) << "position " << position;
        ASSERT_EQ(frame->colorFormat(), MVN_COLOR_BGRA);
        // The same conversion on both sides: the same bytes but for rounding.
        Difference d = compare(frame->buffer()->ptr(), reference.data() + bytes * position, bytes);
        EXPECT_LE(d.max, 2) << "position " << position;
        EXPECT_LE(d.mean, 0.1) << "position " << position;
        MVNFrame::pushBackPool(frame);
    }
}

TEST_P(VideoPictures, TheClipLastsTheWholeFileAtTheTimelinesRate) {
    MVNProducer* clip = makeClip(profile, "codec.video", mediaPath(std::string(GetParam().file) + ".mp4"), id);
    ASSERT_NE(clip, nullptr);
    // Four seconds at 25 a second; 120 pictures at 29.97 last a little
    // longer, and position 100 still starts inside them.
    EXPECT_EQ(clip->getPlaytime(), GetParam().positions);
}

INSTANTIATE_TEST_SUITE_P(Rates, VideoPictures, ::testing::Values(Source{"gop12_25", 100}, Source{"gop12_300001001", 101}),
                         [](const ::testing::TestParamInfo<Source>& info) { return std::string(info.param.file); });

TEST(AnimatedPicture, LoopsItsPicturesAtTheirOwnPace) {
    MediaTest::loadMediaModule();
    MVNProfile profile(64, 36, 25, 1);
    std::string id;
    MVNProducer* clip = makeClip(profile, "codec.gif", mediaPath("anim.gif"), id);
    ASSERT_NE(clip, nullptr);
    // One pass: ten pictures of a tenth of a second, 25 positions.
    EXPECT_EQ(clip->getPlaytime(), 25);
    std::vector<uint8_t> pictures = MediaTest::readBytes(mediaPath("anim.bgra"));
    const size_t bytes = 64 * 36 * 4;
    ASSERT_EQ(pictures.size(), bytes * 10);
    // Position p is at p/25 s: picture floor(p * 10 / 25) of the pass, and
    // the second pass starts over.
    for (int position : {0, 2, 3, 12, 24, 25, 27, 61}) {
        int expected = (position * 10 / 25) % 10;
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip->getImage(position, &frame), 0);
        // A palette picture converts the same on both sides.
        Difference d = compare(frame->buffer()->ptr(), pictures.data() + bytes * expected, bytes);
        EXPECT_LE(d.max, 1) << "position " << position << " should show picture " << expected;
        MVNFrame::pushBackPool(frame);
    }
    destroyService(id);
}

TEST(StillPicture, ShowsTheDecodedPictureAtEveryPosition) {
    MediaTest::loadMediaModule();
    MVNProfile profile(64, 36, 25, 1);
    const std::string path = std::string(MVN_TEST_DATA_DIR) + "/host/blue-32x16.jpg";
    std::string id;
    MVNProducer* clip = makeClip(profile, "stb_image", path, id);
    ASSERT_NE(clip, nullptr);
    EXPECT_EQ(clip->getInt32("width", 0), 32);
    EXPECT_EQ(clip->getInt32("height", 0), 16);
    MVNFrame* direct = MVNImage::loadFromFile(path, 0, 0);
    ASSERT_NE(direct, nullptr);
    for (int position : {0, 40, 3}) {
        MVNFrame* frame = nullptr;
        ASSERT_EQ(clip->getImage(position, &frame), 0);
        EXPECT_EQ(compare(frame->buffer()->ptr(), direct->buffer()->ptr(), 32 * 16 * 4).max, 0);
        MVNFrame::pushBackPool(frame);
    }
    MVNFrame::pushBackPool(direct);
    destroyService(id);
}
