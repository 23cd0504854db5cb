#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "services/MVNRenderTexture.h"

namespace Morvane {

class MVNOgreTextureNodePlane;
template <class T>
class MVNOgreTextureNodeThread;

// The host's render texture: a plain picture on a quad, built through the
// factory "ogreRenderTexture" or by a producer itself. Every call forwards
// to a render-thread wrapper and returns when the engine has done the work.
class MVN_OGRE_API MVNOgreRenderTexture : public MVNRenderTexture {
public:
    // textureName empty: pixels come through updateTexture; otherwise the
    // name of an existing texture. sceneName empty: "MorvaneScene". A hidden
    // quad shows only after setVisible(true), so that its owner can place it
    // first: a frame drawn meanwhile by another thread never sees it at the
    // whole profile's size.
    MVNOgreRenderTexture(const std::string& textureName, int width, int height, int canvasWidth, int canvasHeight,
                         int zOrder, const std::string& sceneName, bool hidden);
    // Shown from the start.
    MVNOgreRenderTexture(const std::string& textureName, int width, int height, int canvasWidth, int canvasHeight,
                         int zOrder, const std::string& sceneName);
    ~MVNOgreRenderTexture() override;
    MVNOgreRenderTexture(const MVNOgreRenderTexture&) = delete;
    MVNOgreRenderTexture& operator=(const MVNOgreRenderTexture&) = delete;

    void updateTexture(uint8_t* data, int width, int height) override;
    void setGeometry(const MVNRect& rect) override;
    void setVisible(bool visible) override;
    void updateAnimation(int position) override;
    void setAnimation(int type) override;
    void setRotation(int degrees) override;
    void setZOrder(int zOrder) override;

    // The wrapper, for render-thread inspection by the module's own code.
    MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>* getNode() const { return node; }

private:
    MVNOgreTextureNodeThread<MVNOgreTextureNodePlane>* node = nullptr;  // owned
};

}  // namespace Morvane
