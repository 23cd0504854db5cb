// The waiter's time-out: it counts only while an item lies in the queue,
// never while the item runs. Each case takes over ten seconds.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <future>
#include <mutex>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "engine/MVNOgreManager.h"
#include "engine/MVNOgreRenderQueue.h"
#include "engine/MVNOgreRenderable.h"
#include "core/MVNProfile.h"

using Morvane::MVNLogLevel;
using Morvane::MVNOgreManager;
using Morvane::MVNOgreRenderable;
using Morvane::MVNOgreRenderQueue;
using MorvaneTest::LogCapture;
using Clock = std::chrono::steady_clock;

TEST(RenderQueueTimeout, WaiterBehindALongQueueGivesUpAfterAboutTenSecondsAndTheItemRunsLater) {
    LogCapture log;
    std::mutex recycledLock;
    std::vector<MVNOgreRenderable*> recycled;
    MVNOgreRenderQueue queue([&](MVNOgreRenderable* r) {
        std::lock_guard<std::mutex> guard(recycledLock);
        recycled.push_back(r);
    });

    // Work ahead of the late item that ends only when the test says so, so
    // that a loaded machine waking the waiter late can't let the late item
    // run first. Everything is queued before the thread starts, so that the
    // late item is surely in the queue (a poster can't get in while an item
    // runs). A watchdog ends the work should the waiter never give up.
    std::promise<void> release;
    std::shared_future<void> released = release.get_future().share();
    auto* ahead = new MVNOgreRenderable([released]() { released.wait_for(std::chrono::seconds(60)); });
    ahead->setName("ahead");
    queue.addRenderable(ahead);
    std::atomic<bool> lateRan{false};
    auto* late = new MVNOgreRenderable([&lateRan]() { lateRan = true; });
    late->setName("late");
    late->setBlock(true);
    queue.addRenderable(late);

    queue.start();
    Clock::time_point begin = Clock::now();
    late->wait();
    double waited = std::chrono::duration<double>(Clock::now() - begin).count();

    EXPECT_FALSE(lateRan.load());
    EXPECT_FALSE(late->isCompleted());
    EXPECT_GE(waited, 9.0);
    EXPECT_LT(waited, 30.0) << "the waiter did not give up";
    EXPECT_EQ(log.count(MVNLogLevel::Warn, "Morvane::MVNOgreRenderable", "late run too long time"), 1);
    release.set_value();

    // Nothing is cancelled: the item runs when its turn comes and is recycled.
    queue.stop();
    EXPECT_TRUE(lateRan.load());
    std::lock_guard<std::mutex> guard(recycledLock);
    ASSERT_EQ(recycled.size(), 2u);
    EXPECT_EQ(recycled.back(), late);
    for (MVNOgreRenderable* r : recycled) {
        delete r;
    }
}

TEST(RenderQueueTimeout, LongCallKeepsItsWaiterBlockedWithoutWarning) {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    manager->release();
    ASSERT_EQ(manager->startQueueOnly(Morvane::MVNProfile("hdv_540_24p")), 0);
    LogCapture log;
    bool done = false;
    Clock::time_point begin = Clock::now();
    manager->callRenderableWait(
        [&done]() {
            std::this_thread::sleep_for(std::chrono::seconds(12));
            done = true;
        },
        "longCall");
    double waited = std::chrono::duration<double>(Clock::now() - begin).count();
    EXPECT_TRUE(done);
    EXPECT_GE(waited, 12.0);
    EXPECT_EQ(log.countContaining("run too long time"), 0);
    manager->release();
}
