#pragma once
// The module's renderer as the host sees it: thin guarded forwarders to
// MVNOgreManager. Until init succeeds every guarded operation logs and
// returns its fallback; a render system whose init failed leaves the
// half-started manager alone at release.
#include "MVNOgreExport.h"
#include "core/MVNProfile.h"
#include "services/MVNRenderSystem.h"

namespace Morvane {

class MVNOgreManager;

class MVN_OGRE_API MVNOgreRenderSystem : public MVNRenderSystem {
public:
    // renderWinWidth x renderWinHeight is the hidden window; 0 for either
    // side takes the profile's size.
    MVNOgreRenderSystem(const MVNProfile& profile, int renderWinWidth, int renderWinHeight);
    ~MVNOgreRenderSystem() override;

    int init() override;
    void release() override;
    void renderOneFrame() override;
    MVNByteBuffer* getRenderImage() override;
    MVNFrame* getRenderFrame() override;
    void updateRenderImage(int time) override;
    void registerFrameListener(MVNFrameListener* listener) override;
    void unregisterFrameListener(MVNFrameListener* listener) override;
    void injectObject(const char* name, void* object) override;
    MVNRect adjustGeometryProfileToWorld(const MVNRect& rect) override;
    MVNPoint adjustPointScreenToProfile(const MVNPoint& point) override;
    MVNRect adjustGeometryProfileToScreen(const MVNRect& rect) override;
    MVNRect adjustGeometryScreenToProfile(const MVNRect& rect) override;
    int getRenderWindowWidth() override;
    int getRenderWindowHeight() override;
    bool isBusy() override;
    void setProfile(const MVNProfile& profile) override;

    bool isInitialized() const { return mInitialized; }

private:
    MVNProfile mProfile;        // copy of the profile given at construction
    MVNOgreManager* mManager;   // the process-wide manager
    bool mInitialized = false;  // init succeeded and release hasn't run
    int mRenderWinWidth;
    int mRenderWinHeight;
};

}  // namespace Morvane
