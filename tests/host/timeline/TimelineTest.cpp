// Playlists and tractors: what is active at each position, with blanks,
// mixes with and without a transition, live clip lengths, and drawing.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "FakeServices.h"
#include "LogCapture.h"
#include "timeline/MVNFactory.h"
#include "timeline/MVNPlaylist.h"
#include "timeline/MVNTractor.h"
#include "services/MVNTransitionAudio.h"

using namespace Morvane;
using MorvaneTest::FakeProducer;
using MorvaneTest::LogCapture;
using MorvaneTest::RecordingTransition;

namespace {

class Timeline : public ::testing::Test {
protected:
    std::string add(MVNService* s) {
        std::string id = MVNFactory::getSingleton()->addService(s);
        ids.push_back(id);
        return id;
    }
    FakeProducer* clip(int in, int length, std::string& id) {
        auto* p = new FakeProducer(profile);
        p->setIn(in);
        p->setOut(in + length - 1);
        id = add(p);
        return p;
    }
    MVNPlaylist* playlist() {
        auto* p = new MVNPlaylist(profile);
        add(p);
        return p;
    }
    void TearDown() override {
        for (auto it = ids.rbegin(); it != ids.rend(); ++it) destroyService(*it);
    }
    // "id@position" for each active clip, "|" between tracks.
    static std::string describe(const std::vector<MVNActiveClip>& clips) {
        std::string out;
        int track = clips.empty() ? 0 : clips.front().track;
        for (const MVNActiveClip& c : clips) {
            if (!out.empty()) out += c.track != track ? " | " : " ";
            track = c.track;
            out += c.id + "@" + std::to_string(c.position);
        }
        return out;
    }
    std::string at(const MVNPlaylist* p, int position) {
        std::vector<MVNActiveClip> out;
        p->activeAt(position, out);
        return describe(out);
    }

    MVNProfile profile{"hd_720_25p"};
    std::vector<std::string> ids;
    std::string a, b, c;
};

}  // namespace

TEST_F(Timeline, PlaylistPositionsAcrossClipsAndBlanks) {
    clip(0, 10, a);
    clip(5, 10, b);
    MVNPlaylist* p = playlist();
    ASSERT_EQ(p->append(a), 0);
    ASSERT_EQ(p->appendBlank(3), 0);
    ASSERT_EQ(p->append(b), 0);
    EXPECT_EQ(p->getPlaytime(), 23);
    const std::pair<int, std::string> expected[] = {{-1, ""},        {0, a + "@0"},  {9, a + "@9"},  {10, ""},
                                                    {12, ""},        {13, b + "@5"}, {22, b + "@14"}, {23, ""}};
    for (const auto& e : expected) EXPECT_EQ(at(p, e.first), e.second) << "position " << e.first;

    MVNPlaylistEntry entry;
    int offset = -1;
    ASSERT_TRUE(p->entryAt(11, entry, offset));
    EXPECT_EQ(entry.kind, MVN_ENTRY_BLANK);
    EXPECT_EQ(entry.start, 10);
    EXPECT_EQ(offset, 1);
    EXPECT_FALSE(p->entryAt(23, entry, offset));
    ASSERT_NE(p->getClip(1), nullptr);
    EXPECT_EQ(p->getClip(1)->getPlaytime(), 3);
    EXPECT_EQ(p->getClip(7), nullptr);
}

TEST_F(Timeline, MixWithoutTransitionShowsBothClipsLaterOnTop) {
    clip(0, 10, a);
    clip(5, 10, b);
    MVNPlaylist* p = playlist();
    p->append(a);
    p->append(b);
    ASSERT_EQ(p->mix(0, 4), 0);
    EXPECT_EQ(p->getPlaytime(), 16);
    const std::pair<int, std::string> expected[] = {{5, a + "@5"},  {6, a + "@6 " + b + "@5"}, {9, a + "@9 " + b + "@8"},
                                                    {10, b + "@9"}, {15, b + "@14"},           {16, ""}};
    for (const auto& e : expected) EXPECT_EQ(at(p, e.first), e.second) << "position " << e.first;
    std::vector<MVNPlaylistEntry> entries = p->entries();
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_EQ(entries[1].kind, MVN_ENTRY_MIX);
    EXPECT_EQ(entries[1].start, 6);
    EXPECT_EQ(entries[1].length, 4);
    EXPECT_EQ(entries[2].in, 9);
}

TEST_F(Timeline, MixWithTransitionRunsItOverTheOverlap) {
    clip(0, 10, a);
    clip(5, 10, b);
    auto* t = new RecordingTransition(profile);
    std::string tid = add(t);
    MVNPlaylist* p = playlist();
    p->append(a);
    p->append(b);
    ASSERT_EQ(p->mix(0, 4, tid), 0);
    EXPECT_EQ(t->getPlaytime(), 4);
    EXPECT_EQ(t->connects, 1);
    EXPECT_EQ(at(p, 8), tid + "@2");
    EXPECT_EQ(p->getClip(1), t);
    MVNFrame* frame = nullptr;
    ASSERT_EQ(t->getImage(2, &frame), 0);
    MVNFrame::pushBackPool(frame);
    ASSERT_EQ(t->seen.size(), 1u);
    EXPECT_EQ(t->seen[0].a, 8) << "A's last four frames are 6..9";
    EXPECT_EQ(t->seen[0].b, 7) << "B's first four frames are 5..8";

    // Removing A takes the mix along and gives B its frames back.
    ASSERT_EQ(p->remove(0), 0);
    EXPECT_EQ(t->disconnects, 1);
    EXPECT_EQ(p->count(), 1);
    EXPECT_EQ(p->getPlaytime(), 10);
    EXPECT_EQ(at(p, 0), b + "@5");
}

TEST_F(Timeline, BadMixesAreRefused) {
    clip(0, 10, a);
    clip(0, 3, b);
    MVNPlaylist* p = playlist();
    p->append(a);
    p->appendBlank(5);
    p->append(b);
    LogCapture log;
    EXPECT_EQ(p->mix(0, 2), -1) << "next entry is a blank";
    EXPECT_EQ(p->mix(2, 2), -1) << "no entry after the last";
    p->remove(1);
    EXPECT_EQ(p->mix(0, 4), -1) << "longer than the second clip";
    EXPECT_EQ(p->mix(0, 0), -1);
    EXPECT_EQ(p->mix(0, 2, "no_such_transition"), -1);
    EXPECT_EQ(p->append("no_such_clip"), -1);
    EXPECT_EQ(p->appendBlank(0), -1);
    EXPECT_EQ(p->remove(9), -1);
    EXPECT_EQ(log.countContaining("mix failed"), 5);
    EXPECT_EQ(p->getPlaytime(), 13) << "refusals changed nothing";
}

TEST_F(Timeline, ClipLengthsAreReadLive) {
    FakeProducer* pa = clip(0, 10, a);
    clip(0, 10, b);
    MVNPlaylist* p = playlist();
    p->append(a);
    p->append(b);
    EXPECT_EQ(at(p, 12), b + "@2");
    pa->setOut(4);  // A shrinks to 5 frames; B moves up
    EXPECT_EQ(at(p, 12), b + "@7");
    destroyService(a);
    EXPECT_EQ(at(p, 0), b + "@0") << "a destroyed clip drops out";
}

TEST_F(Timeline, TractorGivesEveryActiveClipOfEveryTrackInTrackOrder) {
    clip(0, 10, a);
    clip(0, 5, c);
    MVNPlaylist* lower = playlist();
    lower->append(a);
    MVNPlaylist* upper = playlist();
    upper->appendBlank(3);
    upper->append(c);
    auto* tractor = new MVNTractor(profile);
    add(tractor);
    ASSERT_EQ(tractor->setTrack(lower->getStringId(), -1), 0);
    ASSERT_EQ(tractor->setTrack(upper->getStringId(), -1), 0);
    EXPECT_EQ(tractor->getTrack(1), upper);
    EXPECT_EQ(tractor->getPlaytime(), 10);

    auto tracksAt = [&](int position) {
        std::vector<MVNActiveClip> out;
        tractor->activeAt(position, out);
        return describe(out);
    };
    EXPECT_EQ(tracksAt(2), a + "@2");
    EXPECT_EQ(tracksAt(4), a + "@4 | " + c + "@1");
    EXPECT_EQ(tracksAt(10), "");
    std::vector<MVNActiveClip> out;
    tractor->activeAt(4, out);
    ASSERT_EQ(out.size(), 2u);
    EXPECT_EQ(out[1].track, 1);
    EXPECT_EQ(out[1].entry, 1);

    LogCapture log;
    EXPECT_EQ(tractor->setTrack("no_such_track", 0), -1);
    EXPECT_EQ(tractor->setTrack(tractor->getStringId(), 0), -1);
    auto* audio = new MVNTransitionAudio(profile);
    std::string audioId = add(audio);
    EXPECT_EQ(tractor->plantTransitionAudio(audioId, 0, 5), -1);
    EXPECT_EQ(tractor->plantTransitionAudio(audioId, 0, 1), 0);
    EXPECT_EQ(audio->trackB(), 1);
    ASSERT_EQ(tractor->transitionAudios().size(), 1u);
    tractor->clear();
    EXPECT_EQ(tractor->count(), 0);
    EXPECT_EQ(tractor->getPlaytime(), 0);
}

TEST_F(Timeline, RenderingATractorDrawsActiveClipsAndRetiresTheOnesThatLeave) {
    FakeProducer* pa = clip(0, 10, a);
    FakeProducer* pc = clip(0, 2, c);
    MVNPlaylist* lower = playlist();
    lower->append(a);
    MVNPlaylist* upper = playlist();
    upper->appendBlank(3);
    upper->append(c);
    auto* tractor = new MVNTractor(profile);
    add(tractor);
    tractor->setTrack(lower->getStringId(), -1);
    tractor->setTrack(upper->getStringId(), -1);

    for (int position = 0; position < 7; ++position) tractor->render(position);
    EXPECT_EQ(pa->asked, (std::vector<int>{0, 1, 2, 3, 4, 5, 6}));
    EXPECT_EQ(pc->asked, (std::vector<int>{0, 1}));
    EXPECT_EQ(pc->hooks, (std::vector<std::string>{"active 0", "inactive 1", "end"}));
    EXPECT_EQ(pa->hooks, (std::vector<std::string>{"active 0"}));

    MVNFrame* frame = nullptr;
    ASSERT_EQ(tractor->getImage(7, &frame), 0);
    EXPECT_EQ(frame->colorFormat(), MVN_COLOR_BLANK);
    MVNFrame::pushBackPool(frame);
    EXPECT_EQ(pa->asked.back(), 7);
    tractor->resetRender(8);
    EXPECT_EQ(pa->hooks.back(), "inactive 7");
}
