#include "scene/MVNOgreAnimationKeyFrame.h"

#include <Ogre.h>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreAnimationKeyFrame";
}  // namespace

MVNOgreAnimationKeyFrame::MVNOgreAnimationKeyFrame(const std::string& sceneName, Ogre::SceneNode* node,
                                                   const Ogre::Vector3& position, int zOrder)
    : animationName(MVNGeneratorStringId::getSingleton()->genStringId("MVNAnim")),
      sceneName(sceneName),
      node(node),
      zOrder(zOrder),
      position(position) {
    double fps = MVNOgreManager::getSingleton()->getProfile().fps();
    frameTime = fps > 0 ? static_cast<float>(1000000.0 / fps) : 0.0f;
}

MVNOgreAnimationKeyFrame::~MVNOgreAnimationKeyFrame() { release(); }

Ogre::SceneManager* MVNOgreAnimationKeyFrame::_scene() const {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (root == nullptr || !root->hasSceneManager(sceneName)) return nullptr;
    return root->getSceneManager(sceneName);
}

void MVNOgreAnimationKeyFrame::update(int position) {
    float delta;
    if (lastPosition == -1) {
        log_debug(kTag, "anim first update offset:%d", offset);
        delta = offset * frameTime / 1000000.0f;
    } else {
        delta = (position - lastPosition) * frameTime / 1000000.0f;
    }
    elapsed += delta;
    if (state) {
        state->addTime(delta);
        if (Ogre::SceneManager* scene = _scene()) scene->_applySceneAnimations();
    }
    lastPosition = position;
}

void MVNOgreAnimationKeyFrame::release() {
    if (state == nullptr) return;
    log_debug(kTag, "release...");
    if (Ogre::SceneManager* scene = _scene()) {
        if (scene->hasAnimationState(animationName)) scene->destroyAnimationState(animationName);
        if (scene->hasAnimation(animationName)) scene->destroyAnimation(animationName);
    }
    state = nullptr;
    log_debug(kTag, "release done");
}

void MVNOgreAnimationKeyFrame::setPosition(const Ogre::Vector3& position) {
    this->position = position;
    if (state == nullptr) return;
    Ogre::SceneManager* scene = _scene();
    if (scene == nullptr || !scene->hasAnimation(animationName)) return;
    Ogre::Animation* animation = scene->getAnimation(animationName);
    if (!animation->hasNodeTrack(0)) return;
    Ogre::NodeAnimationTrack* track = animation->getNodeTrack(0);
    for (unsigned short i = 0; i < track->getNumKeyFrames(); ++i) {
        track->getNodeKeyFrame(i)->setTranslate(position);
    }
}

void MVNOgreAnimationKeyFrame::setOffset(int offset) {
    log_debug(kTag, "setOffset:%d", offset);
    this->offset = offset;
}

}  // namespace Morvane
