// The sound of timelines: a playlist's mix cross-fades its two clips sample
// by sample, a tractor sums its tracks, "volume" scales a clip, and blanks
// and positions past the end are silent.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "core/MVNAudioBlock.h"
#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNTractor.h"

using namespace Morvane;

namespace {

// Sound of a constant level: the left channel holds `level`, the right
// minus it, so a swapped or summed channel shows.
class LevelProducer : public MVNProducer {
public:
    LevelProducer(const MVNProfile& profile, float level) : MVNProducer(profile), mLevel(level) {}
    int _getAudio(int position, void*, MVNFrame** frame) override {
        MVNFrame* f = MVNAudioBlock::pullSilence(MVNAudioBlock::samplesOf(mProfile, position));
        float* s = MVNAudioBlock::samples(f);
        for (int i = 0; i < f->samples(); ++i) {
            s[2 * i] = mLevel;
            s[2 * i + 1] = -mLevel;
        }
        *frame = f;
        return 0;
    }

private:
    float mLevel;
};

class AudioMix : public ::testing::Test {
protected:
    std::string add(MVNService* s) {
        std::string id = MVNFactory::getSingleton()->addService(s);
        ids.push_back(id);
        return id;
    }
    std::string clip(float level, int length) {
        auto* p = new LevelProducer(profile, level);
        p->setInAndOut(0, length - 1);
        return add(p);
    }
    MVNPlaylist* playlist() {
        auto* p = new MVNPlaylist(profile);
        add(p);
        return p;
    }
    // Left channel of `timeline` at `position`: every sample, or empty when
    // nothing sounds.
    std::vector<float> left(MVNProducer* timeline, int position) {
        MVNFrame* f = nullptr;
        std::vector<float> out;
        if (timeline->getAudio(position, nullptr, &f) != 0) return out;
        EXPECT_EQ(f->samples(), MVNAudioBlock::samplesOf(profile, position));
        const float* s = MVNAudioBlock::samples(f);
        for (int i = 0; i < f->samples(); ++i) {
            out.push_back(s[2 * i]);
            EXPECT_FLOAT_EQ(s[2 * i + 1], -s[2 * i]) << "channels at sample " << i;
        }
        MVNFrame::pushBackPool(f);
        return out;
    }
    void TearDown() override {
        for (auto it = ids.rbegin(); it != ids.rend(); ++it) destroyService(*it);
    }

    // 30000/1001: 1601.6 samples a position, so blocks differ by a sample.
    MVNProfile profile{320, 180, 30000, 1001};
    std::vector<std::string> ids;
};

}  // namespace

TEST_F(AudioMix, AMixCrossFadesSampleBySampleWithoutSteps) {
    MVNPlaylist* p = playlist();
    p->append(clip(0.8f, 20));
    p->append(clip(0.2f, 20));
    ASSERT_EQ(p->mix(0, 10), 0);
    // Clip A alone, then the 10 mixed positions from 10, then B alone.
    EXPECT_FLOAT_EQ(left(p, 9).front(), 0.8f);
    float previous = 0.8f;
    for (int k = 0; k < 10; ++k) {
        std::vector<float> s = left(p, 10 + k);
        ASSERT_FALSE(s.empty());
        // B's share runs from k/10 at the first sample of position k.
        EXPECT_NEAR(s.front(), 0.8f * (1 - k / 10.0f) + 0.2f * (k / 10.0f), 1e-5) << "mix position " << k;
        for (float v : s) {
            EXPECT_LE(v, previous + 1e-6f) << "the level only falls towards B's";
            EXPECT_LE(previous - v, 0.6f / 1600 + 1e-6f) << "no step inside the fade";
            previous = v;
        }
    }
    EXPECT_NEAR(previous, 0.2f, 0.6f / 1600 + 1e-6f);
    EXPECT_FLOAT_EQ(left(p, 20).front(), 0.2f);
}

TEST_F(AudioMix, RemovingAMixTakesItsCrossFadeAlong) {
    MVNPlaylist* p = playlist();
    p->append(clip(0.5f, 20));
    p->append(clip(0.25f, 20));
    ASSERT_EQ(p->mix(0, 10), 0);
    int before = MVNFactory::getSingleton()->count();
    ASSERT_EQ(p->remove(1), 0);
    EXPECT_EQ(MVNFactory::getSingleton()->count(), before - 1) << "the mix's cross-fade is destroyed";
    // The clips play whole again, one after the other.
    EXPECT_FLOAT_EQ(left(p, 15).front(), 0.5f);
    EXPECT_FLOAT_EQ(left(p, 25).front(), 0.25f);
}

TEST_F(AudioMix, TracksAddUpAtTheirClipsVolumesAndBlanksAreSilent) {
    MVNPlaylist* lower = playlist();
    lower->append(clip(0.5f, 30));
    MVNPlaylist* upper = playlist();
    upper->appendBlank(10);
    std::string loud = clip(0.4f, 10);
    getProducerById(loud)->setDouble("volume", 0.5);
    upper->append(loud);
    auto* tractor = new MVNTractor(profile);
    add(tractor);
    tractor->setTrack(lower->getStringId(), -1);
    tractor->setTrack(upper->getStringId(), -1);
    EXPECT_FLOAT_EQ(left(tractor, 5).front(), 0.5f);
    EXPECT_FLOAT_EQ(left(tractor, 12).back(), 0.5f + 0.4f * 0.5f);
    EXPECT_FLOAT_EQ(left(tractor, 25).front(), 0.5f);
    EXPECT_TRUE(left(upper, 5).empty()) << "a blank gives no sound";
    EXPECT_TRUE(left(tractor, 30).empty()) << "past every track's end";
}
