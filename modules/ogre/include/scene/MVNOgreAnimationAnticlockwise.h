#pragma once
#include "scene/MVNOgreAnimationImpl.h"

namespace Morvane {

// Turns the node counter-clockwise by one degree on each update: the speed goes
// by the number of updates, not by the position.
class MVN_OGRE_API MVNOgreAnimationAnticlockwise : public MVNOgreAnimationImpl {
public:
    explicit MVNOgreAnimationAnticlockwise(Ogre::SceneNode* node);
    void update(int position) override;

private:
    Ogre::SceneNode* node;  // not owned: the scene node's
};

}  // namespace Morvane
