// The render queue on its own, with a recycler that records what comes back:
// order, draining at stop, life-cycle log texts, and a thread that survives
// a throwing item. Its items and the pool they are reused from: what reset
// keeps, the destructor's log line, and the guard against an item handed
// back twice.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <future>
#include <mutex>
#include <set>
#include <stdexcept>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "engine/MVNOgreRenderQueue.h"
#include "engine/MVNOgreRenderable.h"
#include "engine/MVNPool.h"

using Morvane::MVNLogLevel;
using Morvane::MVNOgreRenderable;
using Morvane::MVNOgreRenderQueue;
using Morvane::MVNPool;
using MorvaneTest::LogCapture;

namespace {

const char* const kQueueTag = "Morvane::MVNOgreRenderQueue";

// Finished items land here instead of in the manager's pool.
struct Recycled {
    std::mutex lock;
    std::vector<MVNOgreRenderable*> items;

    MVNOgreRenderQueue::Recycler recycler() {
        return [this](MVNOgreRenderable* r) {
            std::lock_guard<std::mutex> guard(lock);
            items.push_back(r);
        };
    }
    size_t size() {
        std::lock_guard<std::mutex> guard(lock);
        return items.size();
    }
    ~Recycled() {
        for (MVNOgreRenderable* r : items) {
            delete r;
        }
    }
};

MVNOgreRenderable* makeItem(std::function<void()> call, const char* name) {
    auto* item = new MVNOgreRenderable(std::move(call));
    item->setName(name);
    return item;
}

// Polls `done` for up to five seconds.
bool eventually(const std::function<bool()>& done) {
    for (int i = 0; i < 500; ++i) {
        if (done()) {
            return true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
    }
    return done();
}

std::string pointerText(const void* p) {
    char text[64];
    std::snprintf(text, sizeof text, "%p", p);
    return text;
}

// Counts its deletions, to see what the pool deletes.
struct Counted {
    static int deleted;
    ~Counted() { ++deleted; }
};
int Counted::deleted = 0;

}  // namespace

TEST(RenderQueue, ItemsFromEightThreadsRunOneAtATimeInEachPostersOrder) {
    Recycled recycled;
    MVNOgreRenderQueue queue(recycled.recycler());
    queue.start();

    const int kThreads = 8;
    const int kPerThread = 200;
    std::mutex seenLock;
    std::vector<std::vector<int>> seen(kThreads);
    std::atomic<int> inFlight{0};
    std::atomic<int> maxInFlight{0};
    std::set<std::thread::id> renderThreads;

    std::vector<std::thread> posters;
    for (int t = 0; t < kThreads; ++t) {
        posters.emplace_back([&, t]() {
            for (int i = 0; i < kPerThread; ++i) {
                queue.addRenderable(makeItem(
                    [&, t, i]() {
                        int now = ++inFlight;
                        int prev = maxInFlight.load();
                        while (now > prev && !maxInFlight.compare_exchange_weak(prev, now)) {
                        }
                        {
                            std::lock_guard<std::mutex> guard(seenLock);
                            seen[t].push_back(i);
                            renderThreads.insert(std::this_thread::get_id());
                        }
                        --inFlight;
                    },
                    "order"));
            }
        });
    }
    for (auto& p : posters) {
        p.join();
    }
    queue.stop();

    EXPECT_EQ(recycled.size(), size_t(kThreads * kPerThread));
    EXPECT_EQ(maxInFlight.load(), 1);
    EXPECT_EQ(renderThreads.size(), 1u);
    EXPECT_EQ(renderThreads.count(std::this_thread::get_id()), 0u);
    for (int t = 0; t < kThreads; ++t) {
        ASSERT_EQ(seen[t].size(), size_t(kPerThread)) << "poster " << t;
        for (int i = 0; i < kPerThread; ++i) {
            ASSERT_EQ(seen[t][i], i) << "poster " << t;
        }
    }
}

TEST(RenderQueue, StopRunsWhatIsQueued) {
    Recycled recycled;
    MVNOgreRenderQueue queue(recycled.recycler());
    std::vector<int> ran;
    // Queued before the thread exists, then stopped at once: whatever the
    // loop didn't reach, the drain at stop must run, in order.
    for (int i = 0; i < 100; ++i) {
        queue.addRenderable(makeItem([&ran, i]() { ran.push_back(i); }, "drain"));
    }
    queue.start();
    queue.stop();

    ASSERT_EQ(ran.size(), 100u);
    for (int i = 0; i < 100; ++i) {
        EXPECT_EQ(ran[i], i);
    }
    EXPECT_EQ(recycled.size(), 100u);
}

TEST(RenderQueue, ItemAddedAfterStopIsRecycledUnrunByTheDestructor) {
    Recycled recycled;
    bool ran = false;
    {
        MVNOgreRenderQueue queue(recycled.recycler());
        queue.start();
        queue.stop();
        queue.addRenderable(makeItem([&ran]() { ran = true; }, "late"));
        EXPECT_FALSE(queue.hasRenderable());
    }
    EXPECT_FALSE(ran);
    EXPECT_EQ(recycled.size(), 1u);
}

TEST(RenderQueue, StartTwiceWarnsAndStopTwiceSaysNotRunning) {
    Recycled recycled;
    LogCapture log;
    MVNOgreRenderQueue queue(recycled.recycler());
    EXPECT_EQ(queue.start(), 0);
    EXPECT_EQ(queue.start(), 0);
    queue.stop();
    queue.stop();

    EXPECT_EQ(log.count(MVNLogLevel::Info, kQueueTag, "start..."), 2);
    EXPECT_EQ(log.count(MVNLogLevel::Warn, kQueueTag, "is already running"), 1);
    EXPECT_EQ(log.count(MVNLogLevel::Info, kQueueTag, "start done"), 1);
    EXPECT_EQ(log.count(MVNLogLevel::Info, kQueueTag, "stop..."), 2);
    EXPECT_EQ(log.count(MVNLogLevel::Info, kQueueTag, "not running"), 1);
    EXPECT_EQ(log.count(MVNLogLevel::Info, kQueueTag, "stop done"), 1);
}

TEST(RenderQueue, CanBeStartedAgainAfterStop) {
    Recycled recycled;
    MVNOgreRenderQueue queue(recycled.recycler());
    std::atomic<int> runs{0};
    queue.start();
    queue.stop();
    queue.start();
    auto* item = makeItem([&runs]() { ++runs; }, "again");
    queue.addRenderableWait(item);
    EXPECT_EQ(runs.load(), 1);
    queue.stop();
}

TEST(RenderQueue, HasRenderableIsTrueWhileTheLastItemRuns) {
    Recycled recycled;
    MVNOgreRenderQueue queue(recycled.recycler());
    EXPECT_FALSE(queue.hasRenderable());
    queue.start();

    std::promise<void> started;
    std::promise<void> gate;
    std::shared_future<void> gateOpen = gate.get_future().share();
    queue.addRenderable(makeItem(
        [&started, gateOpen]() {
            started.set_value();
            gateOpen.wait();
        },
        "last"));
    started.get_future().wait();
    // The queue is empty now; the item is still running.
    EXPECT_TRUE(queue.hasRenderable());
    gate.set_value();
    EXPECT_TRUE(eventually([&]() { return !queue.hasRenderable(); }));
    queue.stop();
    EXPECT_FALSE(queue.hasRenderable());
}

TEST(RenderQueue, EmptyCallbackCompletesNormally) {
    Recycled recycled;
    LogCapture log;
    MVNOgreRenderQueue queue(recycled.recycler());
    queue.start();
    auto* item = makeItem({}, "empty");
    queue.addRenderableWait(item);
    EXPECT_TRUE(item->isCompleted());
    queue.stop();
    EXPECT_EQ(log.countContaining("run too long time"), 0);
}

struct ThrowCase {
    const char* label;
    std::function<void()> call;
    const char* expected;
};

class RenderQueueThrow : public ::testing::TestWithParam<ThrowCase> {};

TEST_P(RenderQueueThrow, ThrowingItemIsLoggedCompletesAndTheThreadLivesOn) {
    Recycled recycled;
    LogCapture log;
    MVNOgreRenderQueue queue(recycled.recycler());
    queue.start();

    auto* thrower = makeItem(GetParam().call, "thrower");
    auto before = std::chrono::steady_clock::now();
    queue.addRenderableWait(thrower);
    // Released by completion, not by the ten-second time-out.
    EXPECT_LT(std::chrono::steady_clock::now() - before, std::chrono::seconds(5));
    EXPECT_TRUE(thrower->isCompleted());

    bool after = false;
    queue.addRenderableWait(makeItem([&after]() { after = true; }, "after"));
    EXPECT_TRUE(after);
    queue.stop();

    EXPECT_TRUE(log.has(MVNLogLevel::Error, kQueueTag, GetParam().expected));
    EXPECT_EQ(recycled.size(), 2u);
}

INSTANTIATE_TEST_SUITE_P(
    Exceptions, RenderQueueThrow,
    ::testing::Values(ThrowCase{"std", []() { throw std::runtime_error("boom"); }, "thrower threw: boom"},
                      ThrowCase{"other", []() { throw 7; }, "thrower threw an unknown exception"}),
    [](const ::testing::TestParamInfo<ThrowCase>& info) { return std::string(info.param.label); });

TEST(Renderable, DestructorLogsItsNameAndAddress) {
    LogCapture log;
    auto* item = new MVNOgreRenderable([]() {});
    item->setName("goodbye");
    std::string expected = "destory name:goodbye ptr:" + pointerText(item);
    delete item;
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "Morvane::MVNOgreRenderable", expected));
}

TEST(Renderable, ResetClearsFlagsAndWorkButKeepsPoolingAndName) {
    int runs = 0;
    MVNOgreRenderable item([&runs]() { ++runs; });
    item.setName("kept");
    item.setUsePool(true);
    item.setBlock(true);
    item.exec();
    item.complete();
    ASSERT_EQ(runs, 1);
    ASSERT_TRUE(item.isCompleted());

    item.reset();
    EXPECT_FALSE(item.isBlock());
    EXPECT_FALSE(item.isCompleted());
    EXPECT_TRUE(item.isUsePool());
    EXPECT_STREQ(item.getName(), "kept");
    item.exec();  // no work left: nothing runs, nothing fails
    EXPECT_EQ(runs, 1);
}

TEST(Renderable, WaitReturnsAtOnceWhenCompletedOrResetForAnotherCaller) {
    LogCapture log;
    MVNOgreRenderable item;
    item.setName("reused");
    item.complete();
    item.wait();
    // A pooled item can be completed, recycled and reset for the next caller
    // before its first waiter looks again; that waiter must not hang on.
    unsigned generation = item.generation();
    item.reset();
    item.wait(generation);
    EXPECT_EQ(log.countContaining("run too long time"), 0);
}

TEST(Pool, HandsOutInTheOrderItemsCameBackAndNullWhenEmpty) {
    MVNPool<int> pool;
    EXPECT_EQ(pool.get(), nullptr);
    int* a = new int(1);
    int* b = new int(2);
    pool.put(a);
    pool.put(b);
    EXPECT_EQ(pool.size(), 2u);
    EXPECT_EQ(pool.get(), a);
    EXPECT_EQ(pool.get(), b);
    EXPECT_EQ(pool.get(), nullptr);
    delete a;
    delete b;
}

TEST(Pool, ItemHandedBackTwiceIsDeletedOnceAndReported) {
    LogCapture log;
    Counted::deleted = 0;
    auto* twice = new Counted();
    auto* once = new Counted();
    {
        MVNPool<Counted> pool;
        pool.put(twice);
        pool.put(once);
        pool.put(twice);
    }
    EXPECT_EQ(Counted::deleted, 2);
    EXPECT_EQ(log.count(MVNLogLevel::Error, "MVNPool", "multi delete obj:" + pointerText(twice)), 1);
    EXPECT_EQ(log.countContaining("multi delete obj:"), 1);
}
