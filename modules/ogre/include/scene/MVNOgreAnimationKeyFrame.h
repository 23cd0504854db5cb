#pragma once
#include <OgreVector.h>

#include <string>

#include "scene/MVNOgreAnimationImpl.h"

namespace Ogre {
class AnimationState;
}

namespace Morvane {

// An animation of the engine's own, through key frames of a node track in
// the scene, played by the clip's position: each update adds the time of
// the frames since the last one (a step back plays backwards). A subclass's
// init builds the track and the state.
class MVN_OGRE_API MVNOgreAnimationKeyFrame : public MVNOgreAnimationImpl {
public:
    MVNOgreAnimationKeyFrame(const std::string& sceneName, Ogre::SceneNode* node, const Ogre::Vector3& position,
                             int zOrder);
    // Gives the engine's animation back: a state left enabled in the scene
    // would move a node that is gone the next time the scene is drawn.
    ~MVNOgreAnimationKeyFrame() override;

    void update(int position) override;
    void release() override;
    // Writes the translation into every key frame, so the clip pulses where
    // it now stands.
    void setPosition(const Ogre::Vector3& position) override;
    void setOffset(int offset) override;

    // Seconds played so far.
    float getElapsed() const { return elapsed; }

protected:
    Ogre::SceneManager* _scene() const;

    Ogre::AnimationState* state = nullptr;  // null until a subclass's init has built it
    std::string animationName;              // from "MVNAnim"
    std::string sceneName;
    Ogre::SceneNode* node;                  // not owned
    int zOrder;
    Ogre::Vector3 position;                 // where the node stands in all key frames
    int offset = 0;                         // frames to jump at the first update
    int lastPosition = -1;                  // position of the last update; -1 none yet
    float frameTime;                        // microseconds per frame of the profile
    float elapsed = 0;                      // seconds played so far
};

}  // namespace Morvane
