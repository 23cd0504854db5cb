// Locks, conditions and threads: the guarantees the render queue and the
// data buffers build on.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <stdexcept>
#include <system_error>
#include <thread>
#include <vector>

#include "core/AutoLock.h"
#include "core/Condition.h"
#include "core/Condition11.h"
#include "core/Mutex.h"
#include "core/Mutex11.h"
#include "core/Thread.h"
#include "core/Thread11.h"

using namespace Morvane;
using Clock = std::chrono::steady_clock;

namespace {

int64_t msSince(Clock::time_point begin) {
    return std::chrono::duration_cast<std::chrono::milliseconds>(Clock::now() - begin).count();
}

TEST(AutoLock, UnlocksWhenTheScopeEndsByAnException) {
    Mutex11 m11;
    Mutex posix;
    for (BaseLock* lock : std::vector<BaseLock*>{&m11, &posix}) {
        try {
            AutoLock guard(*lock);
            throw std::runtime_error("leave the scope");
        } catch (const std::runtime_error&) {
        }
    }
    EXPECT_TRUE(m11.mutex().try_lock());
    m11.unlock();
    EXPECT_EQ(0, pthread_mutex_trylock(posix.native()));
    posix.unlock();
}

TEST(AutoLock, GuardsACounterAcrossEightThreads) {
    Mutex11 m11;
    Mutex posix;
    for (BaseLock* lock : std::vector<BaseLock*>{&m11, &posix}) {
        long counter = 0;
        std::vector<std::thread> threads;
        for (int t = 0; t < 8; ++t) {
            threads.emplace_back([&] {
                for (int i = 0; i < 20000; ++i) {
                    AutoLock guard(*lock);
                    counter = counter + 1;
                }
            });
        }
        for (auto& th : threads) th.join();
        EXPECT_EQ(8 * 20000, counter);
    }
}

TEST(Condition11, TimedWaitEndsAtItsBoundOrLongBeforeOnASignal) {
    Condition11 cond;
    auto begin = Clock::now();
    cond.timedWait(10);
    EXPECT_GE(msSince(begin), 9);
    std::atomic<bool> woke{false};
    std::thread waiter([&] {
        cond.timedWait(10000);
        woke = true;
    });
    // A signal sent before the waiter waits is lost, so keep signalling.
    begin = Clock::now();
    while (!woke && msSince(begin) < 8000) {
        cond.signal_all();
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    waiter.join();
    EXPECT_TRUE(woke);
    EXPECT_LT(msSince(begin), 8000);
}

TEST(Condition, TimedWaitReturnsAtOnce) {
    Mutex m;
    Condition cond(&m);
    m.lock();
    auto begin = Clock::now();
    cond.timedWait(5000);
    const int64_t ms = msSince(begin);
    m.unlock();
    EXPECT_LT(ms, 1000);
}

class Recorder11 : public Thread11 {
public:
    void run() override {
        ran = true;
        try {
            join();  // from the thread itself
        } catch (const std::system_error&) {
            selfJoinThrew = true;
        }
    }
    std::atomic<bool> ran{false};
    std::atomic<bool> selfJoinThrew{false};
};

TEST(Thread11, RunsRunAndRefusesJoinFromItselfOrBeforeStart) {
    Recorder11 idle;
    EXPECT_THROW(idle.join(), std::system_error);

    Recorder11 t;
    t.start();
    t.join();
    EXPECT_TRUE(t.ran);
    EXPECT_TRUE(t.selfJoinThrew);
    EXPECT_THROW(t.join(), std::system_error);  // already joined
}

class Recorder : public Thread {
public:
    void run() override { ran = true; }
    std::atomic<bool> ran{false};
};

TEST(Thread, RunsRunAndJoinsOnceButADetachedOneNever) {
    Recorder t;
    ASSERT_EQ(0, t.start());
    EXPECT_EQ(0, t.join());
    EXPECT_TRUE(t.ran);
    EXPECT_EQ(-1, t.join());
    Recorder detached;
    detached.enableAttach(false);
    ASSERT_EQ(0, detached.start());
    EXPECT_EQ(-1, detached.join());
    auto begin = Clock::now();
    while (!detached.ran && msSince(begin) < 5000) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    EXPECT_TRUE(detached.ran);
}

}  // namespace
