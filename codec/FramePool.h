#pragma once
#include "Frame.h"
#include "but/Mutex11.h"

#include <deque>

namespace codec {

// Recycles the frame buffers of all decoders in the process. Two sides, each
// a list of free frames with its own mutex: pictures (Get) and audio blocks
// (GetAudio). A side keeps at most kMaxFree frames; more are deleted.
class FramePool {
public:
    enum Side : int { kVideoSide = 0, kAudioSide = 1 };
    static constexpr int kMaxFree = 20;

    static FramePool& Instance();

    // A free frame of the picture side whose buffer holds at least `size`
    // bytes; kind and size are 0. Never null.
    Frame* Get(int size);
    // The same from the audio side.
    Frame* GetAudio(int size);
    // Gives the frame back to its side; deleted when that side is full. Null
    // is ignored.
    void Put(Frame* frame);
    // Deletes every free frame of both sides.
    void Clear();
    // Free frames waiting on one side.
    int FreeCount(Side side);

private:
    FramePool() = default;
    ~FramePool();
    FramePool(const FramePool&) = delete;
    FramePool& operator=(const FramePool&) = delete;

    Frame* _Get(Side side, int size);

    struct SideList {
        but::Mutex11 lock;
        std::deque<Frame*> free;
    };
    SideList mSides[2];
};

}  // namespace codec
