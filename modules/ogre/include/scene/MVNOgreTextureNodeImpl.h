#pragma once
#include <cstdint>
#include <string>

#include "core/MVNRect.h"

namespace Morvane {

// One picture on a quad in a scene: a material that owns the picture's
// texture and a scene node that places the quad. The concrete nodes work on
// the render thread only; services hold MVNOgreTextureNodeThread, which
// carries each operation there.
class MVNOgreTextureNodeImpl {
public:
    virtual ~MVNOgreTextureNodeImpl() = default;
    // Four bytes a pixel (B, G, R, A); `data` need only live for the call.
    // No effect on a node built on an existing texture.
    virtual void updateTexture(uint8_t* data, int width, int height) = 0;
    // A rectangle in profile pixels, bottom-left origin.
    virtual void setGeometry(const MVNRect& rect) = 0;
    virtual void setVisible(bool visible) = 0;
    virtual void updateAnimation(int position) = 0;
    virtual void setAnimation(int type) = 0;
    // Absolute angle in degrees, counter-clockwise.
    virtual void setRotation(int degrees) = 0;
    // Draw order and depth; the depth takes effect at the next setGeometry.
    virtual void setZOrder(int zOrder) = 0;
    // Sets a float constant of the fragment program; a name the program
    // doesn't declare is skipped. `wait` matters only to the wrapper: false
    // there means the caller is on the render thread already.
    virtual void setUniformFloat(const std::string& name, float value, bool wait) = 0;
    // Blend factors are values of Ogre::SceneBlendFactor; depth writes go off.
    virtual void setSceneBlending(int source, int destination) = 0;
};

}  // namespace Morvane
