#include "scene/MVNOgreAnimationAnticlockwise.h"

#include <Ogre.h>

namespace Morvane {

MVNOgreAnimationAnticlockwise::MVNOgreAnimationAnticlockwise(Ogre::SceneNode* node) : node(node) {}

void MVNOgreAnimationAnticlockwise::update(int position) {
    if (node) node->roll(Ogre::Radian(+0.017453292f), Ogre::Node::TS_LOCAL);
}

}  // namespace Morvane
