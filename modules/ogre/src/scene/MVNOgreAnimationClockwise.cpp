#include "scene/MVNOgreAnimationClockwise.h"

#include <Ogre.h>

namespace Morvane {

MVNOgreAnimationClockwise::MVNOgreAnimationClockwise(Ogre::SceneNode* node) : node(node) {}

void MVNOgreAnimationClockwise::update(int position) {
    if (node) node->roll(Ogre::Radian(-0.017453292f), Ogre::Node::TS_LOCAL);
}

}  // namespace Morvane
