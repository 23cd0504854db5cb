#pragma once
#include "core/MVNPoint.h"
#include "core/MVNRect.h"

namespace Morvane {

class MVNByteBuffer;
class MVNFrame;
class MVNFrameListener;
class MVNProfile;

// The renderer as the host sees it: built by a module's registered factory
// ("ogreRenderSystem"), brought up with init and taken down with release.
// Every operation but injectObject, setProfile and isBusy needs a successful
// init; before it they log and return their fallback.
class MVNRenderSystem {
public:
    virtual ~MVNRenderSystem() = default;
    // 0 on success, -1 on failure.
    virtual int init() = 0;
    virtual void release() = 0;
    // Updates the hidden window once.
    virtual void renderOneFrame() = 0;
    // The composed picture, read back synchronously. The caller releases it
    // to MVNByteBufferPool. Null on failure.
    virtual MVNByteBuffer* getRenderImage() = 0;
    // The oldest picture of the asynchronous read-back, or null. The caller
    // gives it back to the frame pool.
    virtual MVNFrame* getRenderFrame() = 0;
    // Starts an asynchronous read-back of the picture for `time`.
    virtual void updateRenderImage(int time) = 0;
    virtual void registerFrameListener(MVNFrameListener* listener) = 0;
    virtual void unregisterFrameListener(MVNFrameListener* listener) = 0;
    // Hands the renderer an object of the application by name (a window
    // handle, say); allowed before init.
    virtual void injectObject(const char* name, void* object) = 0;
    virtual MVNRect adjustGeometryProfileToWorld(const MVNRect& rect) = 0;
    virtual MVNPoint adjustPointScreenToProfile(const MVNPoint& point) = 0;
    virtual MVNRect adjustGeometryProfileToScreen(const MVNRect& rect) = 0;
    virtual MVNRect adjustGeometryScreenToProfile(const MVNRect& rect) = 0;
    virtual int getRenderWindowWidth() = 0;
    virtual int getRenderWindowHeight() = 0;
    virtual bool isBusy() = 0;
    virtual void setProfile(const MVNProfile& profile) = 0;
};

}  // namespace Morvane
