#include "MVNChunkPlan.h"

#include <algorithm>
#include <cstdlib>

namespace Morvane {

bool MVNChunkPlan::parse(const std::string& text, MVNChunkPlan& plan, std::string& error) {
    auto bad = [&] {
        error = "--chunk wants K/N with 1 <= K <= N <= " + std::to_string(kMaxChunks) + ", got \"" + text + "\"";
        return false;
    };
    auto slash = text.find('/');
    if (slash == std::string::npos || slash == 0 || slash + 1 == text.size()) return bad();
    for (size_t i = 0; i < text.size(); ++i)
        if (i != slash && (text[i] < '0' || text[i] > '9')) return bad();
    if (slash > 6 || text.size() - slash - 1 > 6) return bad();
    long k = std::strtol(text.substr(0, slash).c_str(), nullptr, 10);
    long n = std::strtol(text.substr(slash + 1).c_str(), nullptr, 10);
    if (k < 1 || n < 1 || k > n || n > kMaxChunks) return bad();
    plan = MVNChunkPlan(static_cast<int>(k), static_cast<int>(n));
    return true;
}

bool MVNChunkPlan::range(int first, int last, int keyInterval, int& chunkFirst, int& chunkLast,
                         std::string& error) const {
    const long long frames = static_cast<long long>(last) - first + 1;
    const long long intervals = (frames + keyInterval - 1) / keyInterval;
    if (frames <= 0 || keyInterval <= 0 || intervals < mCount) {
        error = "--chunk " + std::to_string(mIndex) + "/" + std::to_string(mCount) + ": " + std::to_string(frames) +
                " frames make " + std::to_string(intervals) + " key-frame intervals of " +
                std::to_string(keyInterval) + "; use at most " + std::to_string(intervals) + " chunks";
        return false;
    }
    // Chunk k (from 0) starts at interval ceil(k * intervals / count): the
    // remainder goes to the first chunks.
    auto start = [&](long long k) { return (k * intervals + mCount - 1) / mCount; };
    const long long from = start(mIndex - 1);
    const long long to = start(mIndex);
    chunkFirst = static_cast<int>(first + from * keyInterval);
    chunkLast = static_cast<int>(std::min<long long>(last, first + to * keyInterval - 1));
    return true;
}

std::string MVNChunkPlan::segmentPath(const std::string& output) const {
    auto slash = output.rfind('/');
    auto dot = output.rfind('.');
    if (dot == std::string::npos || (slash != std::string::npos && dot < slash)) dot = output.size();
    return output.substr(0, dot) + ".chunk-" + std::to_string(mIndex) + "-of-" + std::to_string(mCount) +
           output.substr(dot);
}

}  // namespace Morvane
