// Pool cycles at the sizes a timeline moves every frame, each beside the
// plain allocation it replaces, so the ratio is measured in the same run.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <cstring>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"

namespace {

constexpr int kFrame720 = 1280 * 720 * 4;
constexpr int kFrame1080 = 1920 * 1080 * 4;

void BM_FramePoolCycle(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    for (auto _ : state) {
        Morvane::MVNFrame* frame = Morvane::MVNFrame::pullFromPool(1, size);
        benchmark::DoNotOptimize(frame);
        Morvane::MVNFrame::pushBackPool(frame);
    }
}
BENCHMARK(BM_FramePoolCycle)->Arg(kFrame720)->Arg(kFrame1080);

void BM_ByteBufferPoolCycle(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    for (auto _ : state) {
        Morvane::MVNByteBuffer* buffer = Morvane::MVNByteBufferPool::sAlloc(size);
        benchmark::DoNotOptimize(buffer);
        Morvane::MVNByteBufferPool::sRelease(buffer);
    }
}
BENCHMARK(BM_ByteBufferPoolCycle)->Arg(kFrame720)->Arg(kFrame1080);

// Two buffers out at once, as a reader and a consumer hold them.
void BM_ByteBufferPoolTwoOut(benchmark::State& state) {
    const int size = static_cast<int>(state.range(0));
    for (auto _ : state) {
        Morvane::MVNByteBuffer* a = Morvane::MVNByteBufferPool::sAlloc(size);
        Morvane::MVNByteBuffer* b = Morvane::MVNByteBufferPool::sAlloc(size);
        benchmark::DoNotOptimize(a);
        benchmark::DoNotOptimize(b);
        Morvane::MVNByteBufferPool::sRelease(a);
        Morvane::MVNByteBufferPool::sRelease(b);
    }
}
BENCHMARK(BM_ByteBufferPoolTwoOut)->Arg(kFrame1080);

// The baseline: what a frame would cost without pools. Large blocks come
// from mmap, so the first touch of each page is paid every time.
void BM_MallocTouchFree(benchmark::State& state) {
    const size_t size = static_cast<size_t>(state.range(0));
    for (auto _ : state) {
        auto* p = static_cast<unsigned char*>(std::malloc(size));
        for (size_t i = 0; i < size; i += 4096) p[i] = 0;
        benchmark::DoNotOptimize(p);
        std::free(p);
    }
}
BENCHMARK(BM_MallocTouchFree)->Arg(kFrame1080);

}  // namespace
