#pragma once
#include <cstdint>
#include <string>

#include "MVNOgreExport.h"
#include "core/MVNRect.h"

namespace Morvane {

// A transition's render back-end: two inputs and a progress value become one
// quad in a scene. The service holds one and drives it per frame; each
// back-end carries its engine work to the render thread itself.
class MVN_OGRE_API MVNOgreTransitionBase {
public:
    virtual ~MVNOgreTransitionBase() = default;
    // 0, or -1 when the quad could not be built (logged).
    virtual int init() = 0;
    virtual void release() = 0;
    // Sets the material's "progress", 0 to 1.
    virtual void process(float progress) = 0;
    // B,G,R,A pixels of clip A or B.
    virtual void updateTextureA(uint8_t* data, int width, int height) = 0;
    virtual void updateTextureB(uint8_t* data, int width, int height) = 0;
    // Where the transition's picture stands, in profile pixels.
    virtual void setGeometry(const MVNRect& rect) = 0;
    // Where each clip stands within the transition's picture.
    virtual void setGeometryA(const MVNRect& rect) = 0;
    virtual void setGeometryB(const MVNRect& rect) = 0;
    // Draws with another material script from now on.
    virtual void setResource(const std::string& name) = 0;
    virtual void setVisible(bool visible) = 0;
    // Brings the inputs up to date for `position`; before the scene is drawn.
    virtual void render(int position) = 0;
    virtual void setAnimationA(int type) = 0;
    virtual void setAnimationB(int type) = 0;
    virtual void updateAnimationA(int position) = 0;
    virtual void updateAnimationB(int position) = 0;
    // The clip animation that moves clip A or B, or null.
    virtual void* getAnimationObjectA() = 0;
    virtual void* getAnimationObjectB() = 0;
    virtual void setRotationA(int degrees) = 0;
    virtual void setRotationB(int degrees) = 0;
    // A uniform the program doesn't declare is skipped.
    virtual void setUniformFloat(const std::string& name, float value) = 0;
};

}  // namespace Morvane
