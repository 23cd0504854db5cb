// Pools of byte buffers and frames, and the bounded hand-over between the
// render thread and a consumer. The pools are process-wide, so every count
// here is taken relative to the count before the test.
#include <gtest/gtest.h>

#include <atomic>
#include <cstring>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNDoubleFrame.h"
#include "core/MVNFrame.h"

using namespace Morvane;
using MorvaneTest::LogCapture;

namespace {

MVNByteBufferPool* pool() { return MVNByteBufferPool::getSingleton(); }

// A request takes the smallest free buffer that fits, so that a big one
// stays for the big requests; nothing fits a request above them all.
TEST(ByteBufferPool, RequestTakesTheBestFittingFreeBuffer) {
    pool()->trim();
    MVNByteBuffer* big = MVNByteBufferPool::sAlloc(100000);
    MVNByteBuffer* small = MVNByteBufferPool::sAlloc(1000);
    ASSERT_NE(nullptr, small);
    EXPECT_GE(small->bufferSize(), 1000);
    pool()->release(big);
    pool()->release(small);
    MVNByteBuffer* again = MVNByteBufferPool::sAlloc(600);
    EXPECT_EQ(small, again);
    EXPECT_EQ(600, again->size());
    MVNByteBuffer* huge = MVNByteBufferPool::sAlloc(200000);
    EXPECT_NE(big, huge);
    EXPECT_EQ(200000, huge->size());
    EXPECT_EQ(nullptr, MVNByteBufferPool::sAlloc(-1));
    pool()->release(again);
    pool()->release(huge);
}

TEST(ByteBufferPool, DoubleAndForeignReleasesAreLoggedAndIgnored) {
    LogCapture log;
    pool()->trim();
    MVNByteBuffer* a = MVNByteBufferPool::sAlloc(64);
    pool()->release(a);
    const int freeBefore = pool()->freeCount();
    pool()->release(a);
    EXPECT_EQ(freeBefore, pool()->freeCount());
    MVNByteBuffer foreign(8, 0);
    pool()->release(&foreign);
    pool()->release(nullptr);
    EXPECT_EQ(freeBefore, pool()->freeCount());
    EXPECT_EQ(1, log.count(MVNLogLevel::Error, "Morvane::MVNByteBufferPool",
                           "release of a buffer already released, id:" + std::to_string(a->id())));
    EXPECT_EQ(1, log.count(MVNLogLevel::Error, "Morvane::MVNByteBufferPool",
                           "release of a buffer not made by the pool, id:" + std::to_string(foreign.id())));
    // The twice-released buffer is handed out once, not twice.
    MVNByteBuffer* x = MVNByteBufferPool::sAlloc(64);
    MVNByteBuffer* y = MVNByteBufferPool::sAlloc(64);
    EXPECT_NE(x, y);
    pool()->release(x);
    pool()->release(y);
}

TEST(ByteBufferPool, FreeListStaysBounded) {
    pool()->trim();
    std::vector<MVNByteBuffer*> held;
    for (int i = 0; i < MVNByteBufferPool::kMaxFreeBuffers * 3; ++i) {
        held.push_back(MVNByteBufferPool::sAlloc(256));
    }
    for (MVNByteBuffer* b : held) pool()->release(b);
    EXPECT_EQ(MVNByteBufferPool::kMaxFreeBuffers, pool()->freeCount());
    pool()->trim();
    EXPECT_EQ(0, pool()->freeCount());
}

// Eight threads take, fill, check and give back buffers. A buffer handed to
// two threads at once shows up as a foreign pattern.
TEST(ByteBufferPool, EightThreadsNeverShareABufferAndAllComeBack) {
    const int outstandingBefore = pool()->outstandingCount();
    std::atomic<int> corrupted{0};
    std::atomic<int> nulls{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t, &corrupted, &nulls] {
            for (int i = 0; i < 2000; ++i) {
                const int size = 64 + ((i * 131 + t * 17) % 4096);
                MVNByteBuffer* b = MVNByteBufferPool::sAlloc(size);
                if (!b) {
                    ++nulls;
                    continue;
                }
                std::memset(b->ptr(), t + 1, static_cast<size_t>(size));
                std::this_thread::yield();
                for (int k = 0; k < size; k += 61) {
                    if (b->ptr()[k] != t + 1) {
                        ++corrupted;
                        break;
                    }
                }
                MVNByteBufferPool::sRelease(b);
            }
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(0, corrupted.load());
    EXPECT_EQ(0, nulls.load());
    EXPECT_EQ(outstandingBefore, pool()->outstandingCount());
    EXPECT_LE(pool()->freeCount(), MVNByteBufferPool::kMaxFreeBuffers);
}

// ---- Frames ---------------------------------------------------------------

TEST(FramePool, PulledFrameIsClearedAndCarriesTheType) {
    MVNFrame* f = MVNFrame::pullFromPool(1, 64);
    ASSERT_NE(nullptr, f);
    f->setColorFormat(MVN_COLOR_BGRA);
    f->setWidth(4);
    f->setHeight(4);
    f->setRtt("left-over");
    f->setTimestamp(3.5);
    MVNFrame::pushBackPool(f);
    MVNFrame* g = MVNFrame::pullFromPool(7);
    ASSERT_NE(nullptr, g);
    EXPECT_EQ(7, g->type());
    EXPECT_EQ(nullptr, g->buffer());
    EXPECT_EQ(MVN_COLOR_NONE, g->colorFormat());
    EXPECT_TRUE(g->rtt().empty());
    EXPECT_EQ(0.0, g->timestamp());
    MVNFrame::pushBackPool(g);
}

TEST(FramePool, FramePushedTwiceIsLoggedAndNotReusedTwice) {
    LogCapture log;
    MVNFrame* f = MVNFrame::pullFromPool(1, 16);
    MVNFrame::pushBackPool(f);
    MVNFrame::pushBackPool(f);
    EXPECT_EQ(1, log.count(MVNLogLevel::Error, "Morvane::MVNFramePool", "push of a frame already pushed back"));
    MVNFrame* a = MVNFrame::pullFromPool(1);
    MVNFrame* b = MVNFrame::pullFromPool(1);
    EXPECT_NE(a, b);
    MVNFrame::pushBackPool(a);
    MVNFrame::pushBackPool(b);
}

TEST(FramePool, SetRttDataDropsPixelsAndNamesTheTexture) {
    const int buffersBefore = pool()->outstandingCount();
    MVNFrame* f = MVNFrame::pullFromPool(1, 256);
    ASSERT_EQ(0, f->setRttData("FilterRtt_12", 320, 180, MVN_COLOR_RTT));
    EXPECT_EQ(nullptr, f->buffer());
    EXPECT_EQ(0, f->size());
    EXPECT_EQ(buffersBefore, pool()->outstandingCount());
    EXPECT_EQ("FilterRtt_12", f->rtt());
    EXPECT_EQ(180, f->height());
    EXPECT_EQ(-1, f->setRttData("", 1, 1, MVN_COLOR_RTT));
    EXPECT_EQ("FilterRtt_12", f->rtt());
    MVNFrame::pushBackPool(f);
}

TEST(FramePool, EightThreadsPullAndPushWithoutLosingFramesOrBuffers) {
    const int framesBefore = MVNFrame::poolOutstandingCount();
    const int buffersBefore = pool()->outstandingCount();
    std::atomic<int> wrong{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([t, &wrong] {
            std::vector<MVNFrame*> mine;
            for (int i = 0; i < 1500; ++i) {
                MVNFrame* f = MVNFrame::pullFromPool(1, 128 + (i % 7) * 64);
                if (!f) {
                    ++wrong;
                    continue;
                }
                f->setFrames(t * 100000 + i);
                mine.push_back(f);
                if (mine.size() == 5) {
                    for (size_t k = 0; k < mine.size(); ++k) {
                        if (mine[k]->frames() != t * 100000 + i - 4 + static_cast<int>(k)) ++wrong;
                        MVNFrame::pushBackPool(mine[k]);
                    }
                    mine.clear();
                }
            }
            for (MVNFrame* f : mine) MVNFrame::pushBackPool(f);
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(0, wrong.load());
    EXPECT_EQ(framesBefore, MVNFrame::poolOutstandingCount());
    EXPECT_EQ(buffersBefore, pool()->outstandingCount());
}

// Eight threads race for the last frames below the limit: together they
// never hold more than it allows, a run of refusals is one warning however
// many pulls meet it, and frames come again once some are given back.
TEST(FramePool, LimitHoldsUnderEightThreadsAndARunOfRefusalsIsLoggedOnce) {
    const int limitBefore = MVNFrame::poolLimit();
    const int out = MVNFrame::poolOutstandingCount();
    const int extra = 40;
    MVNFrame::setPoolLimit(out + extra);
    LogCapture log;
    std::mutex heldLock;
    std::vector<MVNFrame*> held;
    std::atomic<int> refused{0};
    std::vector<std::thread> threads;
    for (int t = 0; t < 8; ++t) {
        threads.emplace_back([&] {
            for (int i = 0; i < 20; ++i) {
                MVNFrame* f = MVNFrame::pullFromPool(1, 32);
                if (!f) {
                    ++refused;
                    continue;
                }
                std::lock_guard<std::mutex> guard(heldLock);
                held.push_back(f);
            }
        });
    }
    for (auto& th : threads) th.join();
    EXPECT_EQ(extra, static_cast<int>(held.size()));
    EXPECT_EQ(8 * 20 - extra, refused.load());
    EXPECT_EQ(out + extra, MVNFrame::poolOutstandingCount());
    const std::string refusal =
        "pull refused, " + std::to_string(out + extra) + " frames out, the limit is " + std::to_string(out + extra);
    EXPECT_EQ(1, log.count(MVNLogLevel::Warn, "Morvane::MVNFramePool", refusal));
    MVNFrame::pushBackPool(held.back());
    held.pop_back();
    MVNFrame* again = MVNFrame::pullFromPool(1, 32);
    ASSERT_NE(nullptr, again);
    held.push_back(again);
    EXPECT_EQ(1, log.count(MVNLogLevel::Info, "Morvane::MVNFramePool",
                           "pull served again after " + std::to_string(8 * 20 - extra) + " refused"));
    MVNFrame::setPoolLimit(0);
    EXPECT_EQ(1, log.count(MVNLogLevel::Error, "Morvane::MVNFramePool", "setLimit refused, not a positive number:0"));
    EXPECT_EQ(out + extra, MVNFrame::poolLimit());
    for (MVNFrame* f : held) MVNFrame::pushBackPool(f);
    MVNFrame::setPoolLimit(limitBefore);
    EXPECT_EQ(out, MVNFrame::poolOutstandingCount());
}

// ---- MVNDoubleFrame -------------------------------------------------------

TEST(DoubleFrame, FullHandOverDropsTheOldestFrameToThePool) {
    const int framesBefore = MVNFrame::poolOutstandingCount();
    const int buffersBefore = pool()->outstandingCount();
    {
        MVNDoubleFrame hand(2);
        MVNFrame* f[3];
        for (int i = 0; i < 3; ++i) {
            f[i] = MVNFrame::pullFromPool(1, 64);
            f[i]->setFrames(i);
            hand.update(f[i]);
        }
        EXPECT_EQ(2, hand.count());
        EXPECT_EQ(1, hand.dropped());
        // The dropped frame and its buffer are back in their pools.
        EXPECT_EQ(framesBefore + 2, MVNFrame::poolOutstandingCount());
        EXPECT_EQ(buffersBefore + 2, pool()->outstandingCount());
        MVNFrame* first = hand.pop_front();
        ASSERT_NE(nullptr, first);
        EXPECT_EQ(1, first->frames());
        MVNFrame::pushBackPool(first);
        MVNFrame* second = hand.pop_front();
        ASSERT_NE(nullptr, second);
        EXPECT_EQ(2, second->frames());
        EXPECT_EQ(nullptr, hand.pop_front());
        hand.update(second);
        hand.update(nullptr);
        EXPECT_EQ(1, hand.count());
        hand.reset();
        EXPECT_EQ(0, hand.count());
        EXPECT_EQ(framesBefore, MVNFrame::poolOutstandingCount());
        hand.update(MVNFrame::pullFromPool(1, 64));
        // Destruction gives back what still waits.
    }
    EXPECT_EQ(framesBefore, MVNFrame::poolOutstandingCount());
    EXPECT_EQ(buffersBefore, pool()->outstandingCount());
}

TEST(DoubleFrame, ProducerAndConsumerThreadsLoseNoFrameOutsideDrops) {
    const int framesBefore = MVNFrame::poolOutstandingCount();
    MVNDoubleFrame hand(2);
    constexpr int kFrames = 5000;
    std::atomic<bool> done{false};
    int consumed = 0;
    int lastSeen = -1;
    bool ordered = true;
    std::thread consumer([&] {
        while (!done || hand.count() > 0) {
            MVNFrame* f = hand.pop_front();
            if (!f) {
                std::this_thread::yield();
                continue;
            }
            if (f->frames() <= lastSeen) ordered = false;
            lastSeen = f->frames();
            ++consumed;
            MVNFrame::pushBackPool(f);
        }
    });
    for (int i = 0; i < kFrames; ++i) {
        MVNFrame* f = MVNFrame::pullFromPool(1, 32);
        f->setFrames(i);
        hand.update(f);
    }
    done = true;
    consumer.join();
    EXPECT_TRUE(ordered);
    EXPECT_EQ(kFrames, consumed + hand.dropped());
    EXPECT_EQ(framesBefore, MVNFrame::poolOutstandingCount());
}

}  // namespace
