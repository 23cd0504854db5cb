// Renderables and the pool they are reused from: what reset keeps, the
// destructor's log line, and the guard against an item handed back twice.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>

#include "LogCapture.h"
#include "engine/MVNOgreRenderable.h"
#include "engine/MVNPool.h"

using Morvane::MVNLogLevel;
using Morvane::MVNOgreRenderable;
using Morvane::MVNPool;
using MorvaneTest::LogCapture;

namespace {

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
