#pragma once
#include "MVNOgreExport.h"
#include "MVNOgreForward.h"

namespace Morvane {

// One way of moving a clip's scene node while the clip plays. Render thread
// only.
class MVN_OGRE_API MVNOgreAnimationImpl {
public:
    virtual ~MVNOgreAnimationImpl() = default;
    // Moves the node to where it stands at the clip's `position`.
    virtual void update(int position) = 0;
    virtual void init() {}
    // Gives back the engine objects that init made.
    virtual void release() {}
    // Where the node stands when it isn't moved by the animation.
    virtual void setPosition(const Ogre::Vector3& position) {}
    // Frames to jump at the first update.
    virtual void setOffset(int offset) {}
};

}  // namespace Morvane
