// Latency of an empty callRenderableWait: post a function that does nothing
// to the render thread and wait for it, from 1 and from 8 calling threads at
// once. Google Benchmark's mean hides the tail that matters here (a lost
// wake-up costs a whole wait step), so every call is timed on its own and the
// percentiles are reported as counters (microseconds).
#include <benchmark/benchmark.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "engine/MVNOgreManager.h"
#include "core/MVNProfile.h"

namespace {

using Clock = std::chrono::steady_clock;

// The queue without the engine: the round trip alone, no GL in the way.
void startQueue() {
    static const bool started = [] {
        Morvane::MVNOgreManager::getSingleton()->startQueueOnly(Morvane::MVNProfile(1280, 720, 25));
        return true;
    }();
    (void)started;
}

double percentile(std::vector<double>& sorted, double p) {
    if (sorted.empty()) return 0;
    size_t i = static_cast<size_t>(p * (sorted.size() - 1) + 0.5);
    return sorted[std::min(i, sorted.size() - 1)];
}

// One iteration: every caller thread makes kCallsPerThread round trips,
// all threads released at the same moment.
void BM_CallRenderableWaitEmpty(benchmark::State& state) {
    startQueue();
    const int threads = static_cast<int>(state.range(0));
    const int kCallsPerThread = 500;
    auto* manager = Morvane::MVNOgreManager::getSingleton();
    std::vector<double> all;
    all.reserve(static_cast<size_t>(threads) * kCallsPerThread * 8);
    for (auto _ : state) {
        std::vector<std::vector<double>> perThread(threads);
        std::atomic<int> ready{0};
        std::atomic<bool> go{false};
        std::vector<std::thread> callers;
        for (int t = 0; t < threads; ++t) {
            callers.emplace_back([&, t] {
                std::vector<double>& mine = perThread[t];
                mine.reserve(kCallsPerThread);
                ++ready;
                while (!go) std::this_thread::yield();
                for (int i = 0; i < kCallsPerThread; ++i) {
                    auto begin = Clock::now();
                    manager->callRenderableWait([] {}, "benchEmpty");
                    auto end = Clock::now();
                    mine.push_back(std::chrono::duration<double, std::micro>(end - begin).count());
                }
            });
        }
        while (ready < threads) std::this_thread::yield();
        go = true;
        for (auto& c : callers) c.join();
        for (auto& v : perThread) all.insert(all.end(), v.begin(), v.end());
    }
    std::sort(all.begin(), all.end());
    state.counters["p50_us"] = percentile(all, 0.50);
    state.counters["p99_us"] = percentile(all, 0.99);
    state.counters["max_us"] = all.empty() ? 0 : all.back();
    state.counters["calls"] = static_cast<double>(all.size());
    // Round trips a second over all threads together.
    state.SetItemsProcessed(static_cast<int64_t>(all.size()));
}
BENCHMARK(BM_CallRenderableWaitEmpty)->Arg(1)->Arg(8)->Iterations(6)->Unit(benchmark::kMillisecond)->UseRealTime();

// Fire-and-forget posting, for comparison: the caller only pays for the
// queue's lock and the wake-up of the render thread.
void BM_CallRenderableEmpty(benchmark::State& state) {
    startQueue();
    auto* manager = Morvane::MVNOgreManager::getSingleton();
    for (auto _ : state) {
        manager->callRenderable([] {}, "benchEmptyAsync");
    }
    // Drain so that the next benchmark starts on an idle queue.
    manager->callRenderableWait([] {}, "benchDrain");
}
BENCHMARK(BM_CallRenderableEmpty)->Unit(benchmark::kMicrosecond);

}  // namespace
