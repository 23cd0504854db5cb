#pragma once
#include <string>

#include "filters/MVNOgreFilterBase.h"

namespace Ogre {
class Camera;
class SceneNode;
class Viewport;
}  // namespace Ogre

namespace Morvane {

// A back-end that runs an engine compositor script over the whole render
// window instead of drawing a quad: a camera of its own looks at the shared
// scene through a viewport above the window's, and the compositor's chain
// processes what that viewport shows. Nothing in the module builds one; it
// is offered to hosts that want a post effect over everything.
class MVN_OGRE_API MVNOgreFilterCompositor : public MVNOgreFilterBase {
public:
    MVNOgreFilterCompositor(const std::string& compositorName, int width, int height, int zOrder);
    ~MVNOgreFilterCompositor() override;
    MVNOgreFilterCompositor(const MVNOgreFilterCompositor&) = delete;
    MVNOgreFilterCompositor& operator=(const MVNOgreFilterCompositor&) = delete;

    // Step "filterInit". Always 0: whether the compositor runs shows in the
    // log and in isEnabled().
    int init() override;
    // Step "filterRelease": the compositor, viewport, camera and node go.
    void release() override;
    void render(int position) override {}
    void updateTexture(unsigned char* data, int width, int height) override {}
    void setGeometry(const MVNRect& rect) override {}
    void setVisible(bool visible) override {}
    std::string getRTTTextureName() override { return ""; }
    void updateAnimation(int position) override {}
    void setAnimation(int animation) override {}
    void setSceneBlending(int source, int destination) override {}
    void addExtraTexture(const std::string& name, unsigned char* data, int width, int height, int type) override {}
    void setRotation(int rotation) override {}
    void setZOrder(int zOrder) override {}

    // True while the compositor runs on its viewport.
    bool isEnabled() const { return mViewport != nullptr; }

private:
    int _init();
    void _release();

    std::string mCompositorName;
    float mSize[2] = {0, 0};
    int mZOrder;
    int mWidth;
    int mHeight;
    // Render thread only; null until _init succeeds.
    Ogre::Camera* mCamera = nullptr;
    Ogre::SceneNode* mCameraNode = nullptr;
    Ogre::Viewport* mViewport = nullptr;
};

}  // namespace Morvane
