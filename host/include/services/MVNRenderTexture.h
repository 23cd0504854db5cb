#pragma once
#include <cstdint>

#include "core/MVNRect.h"

namespace Morvane {

// One picture on a quad of the renderer's scene, as the host drives it. Built
// by a module's registered factory ("ogreRenderTexture"); each call returns
// when the renderer has done the work.
class MVNRenderTexture {
public:
    virtual ~MVNRenderTexture() = default;
    // Four bytes a pixel (B, G, R, A); `data` need only live for the call.
    // No effect on a texture that names an existing render target.
    virtual void updateTexture(uint8_t* data, int width, int height) = 0;
    // A rectangle in profile pixels, bottom-left origin.
    virtual void setGeometry(const MVNRect& rect) = 0;
    virtual void setVisible(bool visible) = 0;
    virtual void updateAnimation(int position) = 0;
    virtual void setAnimation(int type) = 0;
    virtual void setRotation(int degrees) = 0;
    virtual void setZOrder(int zOrder) = 0;
};

}  // namespace Morvane
