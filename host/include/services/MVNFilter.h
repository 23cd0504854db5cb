#pragma once
#include <atomic>

#include "core/MVNRect.h"
#include "services/MVNService.h"

namespace Morvane {

class MVNProducer;

// A per-frame processor attached to a producer. The producer (or the group
// it belongs to) calls processImage with each frame in chain order.
//
// processImage takes the frame and returns the frame to hand on, which may
// be the same one; once it returns another frame, the input is the filter's
// to give back. Null means failure, and the input still belongs to the
// caller, which passes it on unfiltered.
class MVNFilter : public MVNService {
public:
    MVNFilter(const MVNProfile& profile, MVNFilterType type, MVNFilterTypeUse use);
    ~MVNFilter() override;

    virtual void reconfig() {}
    virtual MVNFrame* processAudio(int position, MVNFrame* frame) { return nullptr; }
    virtual MVNFrame* processImage(int position, MVNFrame* frame) { return nullptr; }
    virtual void setGeometry(const MVNRect& rect) {}
    virtual int seek(int position, int whence) { return 0; }
    virtual void updateCanvas(MVNFrame* frame) {}
    // The filter was attached to `service`; connectedService() already
    // names it.
    virtual void _OnConnected(MVNService* service) {}
    // The filter was taken off `service`; connectedService() is still it
    // during the call and null afterwards.
    virtual void _OnDisconnected(MVNService* service) {}
    // A new, unconnected filter of the same class for cloning clips.
    virtual MVNFilter* _alloc() { return nullptr; }
    virtual void _OnVisibleChanged(bool visible) {}
    virtual void _OnAnimationChanged(int animation) {}
    virtual void _OnRotationChanged(int rotation) {}
    // True while the filter puts the clip's picture into the scene itself,
    // so that the clip's own quad must not show as well. A filter that
    // could not set up its drawing says false, and the clip stays drawn.
    virtual bool drawsPicture() { return true; }

    MVNFilterType filterType() const { return mFilterType; }
    MVNFilterTypeUse filterTypeUse() const { return mFilterTypeUse; }

    // The service the filter is attached to, null when detached.
    MVNService* connectedService() const { return mConnected.load(); }
    // The same, when it is a producer.
    MVNProducer* connectedProducer() const;

    // Used by MVNProducer while attaching and detaching.
    void _setConnectedService(MVNService* service) { mConnected.store(service); }

private:
    MVNFilterType mFilterType;
    MVNFilterTypeUse mFilterTypeUse;
    // Written by the attaching thread, read by render threads.
    std::atomic<MVNService*> mConnected{nullptr};
};

}  // namespace Morvane
