#pragma once
#include <string>

namespace Morvane {

// Which frames the K-th of N render chunks draws. A range is cut only where
// a key-frame interval of the encoder starts, so every chunk opens with a
// closed GOP (each chunk's encoder starts afresh) and the joined pieces keep
// a single render's key-frame cadence.
// The intervals are shared out as evenly as they go; earlier chunks never
// get fewer than later ones.
class MVNChunkPlan {
public:
    // Reads "K/N" (1 <= K <= N <= kMaxChunks). False with `error` set
    // (a one-line text for the user) on anything else.
    static bool parse(const std::string& text, MVNChunkPlan& plan, std::string& error);

    MVNChunkPlan() = default;
    MVNChunkPlan(int index, int count) : mIndex(index), mCount(count) {}

    // The frames of this chunk within [first, last] (inclusive), cut every
    // `keyInterval` frames counted from `first`. False with `error` set when
    // the range has fewer key-frame intervals than there are chunks.
    bool range(int first, int last, int keyInterval, int& chunkFirst, int& chunkLast, std::string& error) const;

    // Where the chunk of the video `output` goes: beside it, the chunk's
    // place in its name ("film.mp4" -> "film.chunk-2-of-4.mp4").
    std::string segmentPath(const std::string& output) const;

    int index() const { return mIndex; }
    int count() const { return mCount; }

    static constexpr int kMaxChunks = 10000;

private:
    int mIndex = 1;
    int mCount = 1;
};

}  // namespace Morvane
