#pragma once
#include <cstdint>
#include <vector>

namespace codec {

// Kinds of a decoded frame as the read calls report them.
enum FrameKind : int { kFrameNone = 0, kFrameVideo = 1, kFrameAudio = 2 };

// A decoded picture or block of samples kept between calls (the seek's cached
// picture, the queue of decoded frames). Frames come from FramePool::Get and
// go back with FramePool::Put.
struct Frame {
    int kind = kFrameNone;      // kFrameVideo or kFrameAudio once filled
    int size = 0;               // valid bytes in data
    double time = 0;            // stream time in seconds, first timestamp not removed
    int64_t position = 0;       // frame index at the stream's rate (pictures only)
    int side = 0;               // the pool side it returns to
    std::vector<uint8_t> data;  // capacity in data.size(); never shrinks while pooled
};

}  // namespace codec
