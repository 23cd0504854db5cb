#pragma once
#include "scene/MVNOgreAnimationKeyFrame.h"

namespace Morvane {

// The clip pulses once: from 75 per cent to 125 per cent of its size at a
// quarter of the length, back to 75 at three quarters, and settles at its
// own size at the end, along a spline.
class MVN_OGRE_API MVNOgreAnimationScalingBack : public MVNOgreAnimationKeyFrame {
public:
    MVNOgreAnimationScalingBack(const std::string& sceneName, Ogre::SceneNode* node, const Ogre::Vector3& position,
                                int zOrder, int length);
    void init() override;

private:
    int length;  // frames
};

}  // namespace Morvane
