#include "scene/MVNOgreAnimationScalingBack.h"

#include <Ogre.h>

#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreAnimationScalingBack";
}  // namespace

MVNOgreAnimationScalingBack::MVNOgreAnimationScalingBack(const std::string& sceneName, Ogre::SceneNode* node,
                                                         const Ogre::Vector3& position, int zOrder, int length)
    : MVNOgreAnimationKeyFrame(sceneName, node, position, zOrder), length(length) {}

void MVNOgreAnimationScalingBack::init() {
    log_debug(kTag, "init...");
    Ogre::SceneManager* scene = _scene();
    double fps = MVNOgreManager::getSingleton()->getProfile().fps();
    if (scene == nullptr || node == nullptr || fps <= 0) return;
    float duration = static_cast<float>(length / fps);
    Ogre::Animation* animation = scene->createAnimation(animationName, duration);
    animation->setInterpolationMode(Ogre::Animation::IM_SPLINE);
    Ogre::NodeAnimationTrack* track = animation->createNodeTrack(0, node);
    const struct {
        float at;
        float scale;
    } keys[] = {{0.0f, 0.75f}, {0.25f, 1.25f}, {0.75f, 0.75f}, {1.0f, 1.0f}};
    for (const auto& key : keys) {
        Ogre::TransformKeyFrame* frame = track->createNodeKeyFrame(duration * key.at);
        frame->setTranslate(position);
        frame->setScale(Ogre::Vector3(key.scale, key.scale, 1.0f));
    }
    state = scene->createAnimationState(animationName);
    state->setEnabled(true);
    state->setLoop(false);
    log_debug(kTag, "init done");
}

}  // namespace Morvane
