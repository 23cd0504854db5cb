#include "FramePool.h"

#include "core/MVNLog.h"
#include "but/AutoLock.h"

namespace codec {

namespace {
const char* kTag = "codec::FramePool";
}

FramePool& FramePool::Instance() {
    // Never destroyed: decoders released from static destructors may still
    // give frames back.
    static FramePool* pool = new FramePool();
    return *pool;
}

FramePool::~FramePool() { Clear(); }

Frame* FramePool::Get(int size) { return _Get(kVideoSide, size); }

Frame* FramePool::GetAudio(int size) { return _Get(kAudioSide, size); }

Frame* FramePool::_Get(Side side, int size) {
    Frame* frame = nullptr;
    {
        but::AutoLock guard(mSides[side].lock);
        if (!mSides[side].free.empty()) {
            frame = mSides[side].free.front();
            mSides[side].free.pop_front();
        }
    }
    if (!frame) {
        frame = new Frame();
        frame->side = side;
    }
    if (size > 0 && static_cast<int>(frame->data.size()) < size)
        frame->data.resize(static_cast<size_t>(size));
    frame->kind = kFrameNone;
    frame->size = 0;
    frame->time = 0;
    frame->position = 0;
    return frame;
}

void FramePool::Put(Frame* frame) {
    if (!frame)
        return;
    Side side = frame->side == kAudioSide ? kAudioSide : kVideoSide;
    {
        but::AutoLock guard(mSides[side].lock);
        if (static_cast<int>(mSides[side].free.size()) < kMaxFree) {
            mSides[side].free.push_back(frame);
            return;
        }
    }
    delete frame;
}

void FramePool::Clear() {
    log_debug(kTag, "Clear...");
    for (auto& side : mSides) {
        std::deque<Frame*> gone;
        {
            but::AutoLock guard(side.lock);
            gone.swap(side.free);
        }
        for (Frame* f : gone)
            delete f;
    }
    log_debug(kTag, "Clear done");
}

int FramePool::FreeCount(Side side) {
    but::AutoLock guard(mSides[side].lock);
    return static_cast<int>(mSides[side].free.size());
}

}  // namespace codec
