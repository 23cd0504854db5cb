#pragma once

namespace Morvane {

// The part of a quad that stands in the engine's scene graph: mesh, entity
// and node. Render thread only.
class MVNOgreSceneNodeImpl {
public:
    virtual ~MVNOgreSceneNodeImpl() = default;
    // World position of the node (planes only).
    virtual void setPosition(float x, float y, float z) = 0;
    // Screen corners in -1..1 (rectangles only).
    virtual void setCorners(float left, float top, float right, float bottom) = 0;
    virtual void setVisible(bool visible) = 0;
    virtual void setAnimation(int type) = 0;
    virtual void updateAnimation(int position) = 0;
    // The clip animation that moves the node, or null.
    virtual void* getAnimationObject() = 0;
    // Absolute angle in degrees, counter-clockwise.
    virtual void setRotation(int degrees) = 0;
    virtual void setZOrder(int zOrder) = 0;
};

}  // namespace Morvane
