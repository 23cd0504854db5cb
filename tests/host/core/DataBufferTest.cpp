// The byte queue under the decoders and readers: growth, pulls, advances,
// compaction, its debug line, and the blocking form for two threads.
#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <numeric>
#include <thread>
#include <vector>

#include "LogCapture.h"
#include "core/MVNDataBuffer.h"
#include "core/MVNDataBufferBlock.h"

using namespace Morvane;
using MorvaneTest::LogCapture;

namespace {

std::vector<uint8_t> sequence(int n, int start = 0) {
    std::vector<uint8_t> v(static_cast<size_t>(n));
    for (int i = 0; i < n; ++i) v[static_cast<size_t>(i)] = static_cast<uint8_t>(start + i);
    return v;
}

TEST(DataBuffer, PushIntoRoomAppendsAndAFullerOneGrowsFromUsedPlusN) {
    MVNDataBuffer buf;
    std::vector<uint8_t> data = sequence(1500);
    ASSERT_EQ(0, buf.pushData(data.data(), 100));  // size 100 + 100 % 1024 = 200
    ASSERT_EQ(0, buf.pushData(data.data() + 100, 50));
    EXPECT_EQ(200, buf.size());
    std::vector<uint8_t> out(150);
    ASSERT_EQ(0, buf.pullData(out.data(), 150));
    EXPECT_EQ(sequence(150), out);
    ASSERT_EQ(0, buf.pushData(data.data(), 1000));  // need 1000: 1000 + 1000 = 2000
    ASSERT_EQ(0, buf.pushData(data.data(), 1500));  // need 2500: 2500 + 452
    EXPECT_EQ(2952, buf.size());
    EXPECT_EQ(2500, buf.used());
}

TEST(DataBuffer, PullOfAllValidBytesRewindsBothMarks) {
    MVNDataBuffer buf;
    std::vector<uint8_t> data = sequence(10);
    buf.pushData(data.data(), 10);
    uint8_t out[10];
    ASSERT_EQ(0, buf.pullData(out, 4));
    EXPECT_EQ(4, buf.offset());
    EXPECT_EQ(10, buf.used());
    EXPECT_EQ(0, out[0]);
    EXPECT_EQ(4, *buf.buffer());
    ASSERT_EQ(0, buf.pullData(out, 6));
    EXPECT_EQ(9, out[5]);
    EXPECT_EQ(0, buf.offset());
    EXPECT_EQ(0, buf.used());
}

TEST(DataBuffer, PullOfMoreThanValidFailsWithoutChange) {
    MVNDataBuffer buf;
    std::vector<uint8_t> data = sequence(10);
    buf.pushData(data.data(), 10);
    uint8_t out[16] = {0xEE};
    buf.pullData(out, 3);
    EXPECT_EQ(-1, buf.pullData(out, 8));
    EXPECT_EQ(3, buf.offset());
    EXPECT_EQ(10, buf.used());
    EXPECT_EQ(0, out[0]);
    EXPECT_EQ(-1, MVNDataBuffer().pullData(out, 1));
}

TEST(DataBuffer, AdvanceOffsetToUsedRewindsAndPastItEmptiesAndFails) {
    MVNDataBuffer buf;
    std::vector<uint8_t> data = sequence(10);
    buf.pushData(data.data(), 10);
    ASSERT_EQ(0, buf.advanceOffset(10));
    EXPECT_EQ(0, buf.used());
    buf.pushData(data.data(), 10);
    ASSERT_EQ(0, buf.advanceOffset(4));
    EXPECT_EQ(4, buf.offset());
    EXPECT_EQ(-1, buf.advanceOffset(7));
    EXPECT_EQ(0, buf.offset());
    EXPECT_EQ(0, buf.used());
    EXPECT_FALSE(buf.peep(1));
}

TEST(DataBuffer, AllocThenWriteAtTailThenAdvanceUsed) {
    MVNDataBuffer buf;
    ASSERT_EQ(0, buf.alloc(64));
    EXPECT_EQ(64, buf.size());  // alloc grows to exactly the need
    EXPECT_EQ(0, buf.used());
    std::vector<uint8_t> data = sequence(64, 7);
    std::copy(data.begin(), data.end(), buf.tail());
    ASSERT_EQ(0, buf.advanceUsed(64));
    EXPECT_EQ(-1, buf.advanceUsed(1));  // past size()
    EXPECT_EQ(64, buf.used());
    EXPECT_TRUE(buf.peep(64));
    EXPECT_FALSE(buf.peep(65));
    EXPECT_EQ(7, buf.buffer()[0]);
    EXPECT_EQ(0, buf.alloc(10));
    EXPECT_EQ(74, buf.size());
}

TEST(DataBuffer, AdjustMovesValidBytesToStartOnceOffsetReachesBlockSize) {
    MVNDataBuffer buf(8);
    std::vector<uint8_t> data = sequence(12);
    buf.pushData(data.data(), 12);
    uint8_t out[12];
    buf.pullData(out, 7);
    buf.adjust();  // offset 7 is below the block size: nothing moves
    EXPECT_EQ(7, buf.offset());
    buf.pullData(out, 1);
    std::vector<uint8_t> more = sequence(3, 100);
    ASSERT_EQ(0, buf.pushData(more.data(), 3));  // push adjusts first
    EXPECT_EQ(0, buf.offset());
    EXPECT_EQ(7, buf.used());
    ASSERT_EQ(0, buf.pullData(out, 7));
    const uint8_t expected[7] = {8, 9, 10, 11, 100, 101, 102};
    EXPECT_TRUE(std::equal(expected, expected + 7, out));
}

TEST(DataBuffer, RefusesNegativeCountsAndNullData) {
    MVNDataBuffer buf;
    EXPECT_EQ(-1, buf.pushData(nullptr, 4));
    EXPECT_EQ(-1, buf.pushData(nullptr, -1));
    EXPECT_EQ(0, buf.pushData(nullptr, 0));
    EXPECT_EQ(-1, buf.alloc(-5));
    EXPECT_EQ(-1, buf.advanceUsed(-1));
    EXPECT_EQ(0, buf.used());
    std::vector<uint8_t> data = sequence(100);
    buf.pushData(data.data(), 100);
    buf.reset();  // empties but keeps the storage
    EXPECT_EQ(0, buf.used());
    EXPECT_EQ(200, buf.size());
}

TEST(DataBuffer, DebugLogsMarksAndSizesUnderItsTag) {
    LogCapture log;
    MVNDataBuffer buf;
    std::vector<uint8_t> data = sequence(1500);
    buf.pushData(data.data(), 1500);
    uint8_t out[10];
    buf.pullData(out, 10);
    buf.debug("audio");
    const std::string expected = "audio id(" + std::to_string(buf.dataId()) + "), used:1500, offset:10, byteBufferSize(" +
                                 std::to_string(buf.id()) + "):1976";
    EXPECT_TRUE(log.has(MVNLogLevel::Debug, "MVNDataBuffer", expected)) << expected;
}

// ---- MVNDataBufferBlock ---------------------------------------------------

TEST(DataBufferBlock, PullWithoutWriterFailsAfterTenWaitsOf20ms) {
    MVNDataBufferBlock buf;
    uint8_t out[4];
    auto begin = std::chrono::steady_clock::now();
    EXPECT_EQ(-1, buf.pullData(out, 4));
    auto ms = std::chrono::duration_cast<std::chrono::milliseconds>(std::chrono::steady_clock::now() - begin).count();
    // Ten waits of 20 ms: about 200 ms, with room for a loaded machine.
    EXPECT_GE(ms, 180);
    EXPECT_LE(ms, 3000);
}

// A waiting pull wakes for bytes pushed by another thread, and for bytes
// written through alloc once they are advanced.
TEST(DataBufferBlock, WriterThreadUnblocksWaitingPull) {
    MVNDataBufferBlock buf;
    std::thread writer([&buf] {
        std::this_thread::sleep_for(std::chrono::milliseconds(40));
        std::vector<uint8_t> data = sequence(6, 50);
        buf.pushData(data.data(), 6);
        std::this_thread::sleep_for(std::chrono::milliseconds(30));
        ASSERT_EQ(0, buf.alloc(3));
        std::copy(data.begin(), data.begin() + 3, buf.tail());
        buf.advanceUsed(3);
    });
    uint8_t out[6] = {0};
    int rc = buf.pullData(out, 6);
    EXPECT_EQ(55, out[5]);
    int rc2 = buf.pullData(out, 3);
    writer.join();
    ASSERT_EQ(0, rc);
    ASSERT_EQ(0, rc2);
    EXPECT_EQ(52, out[2]);
    EXPECT_EQ(0, buf.used());
}

// One writer and one reader stream bytes through a small block size, so that
// compaction runs while the reader pulls; every byte must arrive in order.
TEST(DataBufferBlock, StreamOfOneWriterAndOneReaderArrivesInOrder) {
    MVNDataBufferBlock buf(64);
    constexpr int kTotal = 200000;
    std::atomic<bool> writerDone{false};
    std::thread writer([&] {
        uint8_t chunk[97];
        int sent = 0;
        while (sent < kTotal) {
            int n = std::min(static_cast<int>(sizeof chunk), kTotal - sent);
            for (int i = 0; i < n; ++i) chunk[i] = static_cast<uint8_t>((sent + i) * 7);
            ASSERT_EQ(0, buf.pushData(chunk, n));
            sent += n;
            if (sent % 970 == 0) std::this_thread::yield();
        }
        writerDone = true;
    });
    int received = 0;
    int mismatches = 0;
    uint8_t piece[31];
    auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(60);
    while (received < kTotal && std::chrono::steady_clock::now() < deadline) {
        int n = std::min(static_cast<int>(sizeof piece), kTotal - received);
        if (buf.pullData(piece, n) != 0) {
            continue;  // the writer was slow: ten waits ran out, try again
        }
        for (int i = 0; i < n; ++i) {
            if (piece[i] != static_cast<uint8_t>((received + i) * 7)) ++mismatches;
        }
        received += n;
    }
    writer.join();
    EXPECT_TRUE(writerDone);
    EXPECT_EQ(kTotal, received);
    EXPECT_EQ(0, mismatches);
}

}  // namespace
