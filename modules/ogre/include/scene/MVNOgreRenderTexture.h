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
    // name of an existing texture. sceneName empty: "MorvaneScene".
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
