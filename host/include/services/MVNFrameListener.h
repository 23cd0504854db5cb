#pragma once

namespace Morvane {

class MVNFrame;

// Receives each composed picture of an asynchronous read-back. The frame
// passes to the listener, which gives it back to the pool when done.
class MVNFrameListener {
public:
    virtual ~MVNFrameListener() = default;
    virtual void onFrameRendered(MVNFrame* frame) {}
};

}  // namespace Morvane
