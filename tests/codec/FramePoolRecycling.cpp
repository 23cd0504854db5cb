// The frame pool hands buffers back out instead of allocating, keeps at most
// twenty free frames a side, and survives threads taking and giving at once.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "FramePool.h"
#include "LogCapture.h"

using codec::Frame;
using codec::FramePool;
using Morvane::MVNLogLevel;

class FramePoolRecycling : public ::testing::Test {
protected:
    void SetUp() override { FramePool::Instance().Clear(); }
    void TearDown() override { FramePool::Instance().Clear(); }
};

TEST_F(FramePoolRecycling, GivesBackTheSameFrameWithAGrownBuffer) {
    FramePool& pool = FramePool::Instance();
    Frame* first = pool.Get(100);
    ASSERT_NE(nullptr, first);
    EXPECT_GE(first->data.size(), 100u);
    first->kind = codec::kFrameVideo;
    first->size = 100;
    pool.Put(first);
    EXPECT_EQ(1, pool.FreeCount(FramePool::kVideoSide));

    Frame* again = pool.Get(5000);
    EXPECT_EQ(first, again);
    EXPECT_GE(again->data.size(), 5000u);
    EXPECT_EQ(0, again->kind);
    EXPECT_EQ(0, again->size);
    pool.Put(again);
}

TEST_F(FramePoolRecycling, KeepsTwentyFreeFramesASideAndClearEmptiesBoth) {
    FramePool& pool = FramePool::Instance();
    std::vector<Frame*> frames;
    for (int i = 0; i < 21; ++i)
        frames.push_back(pool.Get(16));
    for (Frame* f : frames)
        pool.Put(f);
    EXPECT_EQ(20, pool.FreeCount(FramePool::kVideoSide));
    EXPECT_EQ(0, pool.FreeCount(FramePool::kAudioSide));
    // Audio frames return to their own side.
    Frame* audio = pool.GetAudio(4096);
    pool.Put(audio);
    EXPECT_EQ(1, pool.FreeCount(FramePool::kAudioSide));
    EXPECT_EQ(audio, pool.GetAudio(1));
    pool.Put(audio);

    MorvaneTest::LogCapture log;
    pool.Clear();
    EXPECT_EQ(0, pool.FreeCount(FramePool::kVideoSide));
    EXPECT_EQ(0, pool.FreeCount(FramePool::kAudioSide));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "codec::FramePool", "Clear..."));
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "codec::FramePool", "Clear done"));
}

TEST_F(FramePoolRecycling, ThreadsTakingAndGivingNeverShareAFrame) {
    FramePool& pool = FramePool::Instance();
    auto worker = [&pool](uint8_t mark) {
        for (int i = 0; i < 2000; ++i) {
            Frame* f = pool.Get(64);
            for (auto& b : f->data)
                b = mark;
            for (auto b : f->data)
                if (b != mark)
                    ADD_FAILURE() << "a frame was handed to two threads";
            pool.Put(f);
        }
    };
    std::vector<std::thread> threads;
    for (uint8_t t = 1; t <= 4; ++t)
        threads.emplace_back(worker, t);
    for (auto& t : threads)
        t.join();
    EXPECT_LE(pool.FreeCount(FramePool::kVideoSide), FramePool::kMaxFree);
}
