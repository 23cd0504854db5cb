#include "scene/MVNOgreAnimation.h"

#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreAnimationAnticlockwise.h"
#include "scene/MVNOgreAnimationClockwise.h"
#include "scene/MVNOgreAnimationScalingBack.h"

namespace Morvane {

MVNOgreAnimation::MVNOgreAnimation(const std::string& sceneName, Ogre::SceneNode* node,
                                   const Ogre::Vector3& position, int type)
    : sceneName(sceneName),
      node(node),
      length(static_cast<int>(10.0 * MVNOgreManager::getSingleton()->getProfile().fps())),
      type(type),
      position(position) {}

MVNOgreAnimation::~MVNOgreAnimation() { delete impl; }

void MVNOgreAnimation::init() { impl = _createAnimation(); }

void MVNOgreAnimation::update(int position) {
    if (impl) impl->update(position);
}

void MVNOgreAnimation::setType(int type) {
    if (type == this->type) return;
    this->type = type;
    delete impl;
    impl = _createAnimation();
}

void MVNOgreAnimation::setPosition(const Ogre::Vector3& position) {
    this->position = position;
    if (impl) impl->setPosition(position);
}

void MVNOgreAnimation::setOffset(int offset) {
    this->offset = offset;
    if (impl) impl->setOffset(offset);
}

MVNOgreAnimationImpl* MVNOgreAnimation::_createAnimation() {
    MVNOgreAnimationImpl* made = nullptr;
    switch (type) {
        case 1: made = new MVNOgreAnimationClockwise(node); break;
        case 2: made = new MVNOgreAnimationAnticlockwise(node); break;
        case 3: made = new MVNOgreAnimationScalingBack(sceneName, node, position, zOrder, length); break;
        default: return nullptr;
    }
    made->init();
    made->setOffset(offset);
    return made;
}

}  // namespace Morvane
