#pragma once
#include <OgreVector.h>

#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"

namespace Morvane {

class MVNOgreAnimationImpl;

// A clip animation by type number: 1 turns the clip clockwise, 2
// anticlockwise, 3 pulses its size once (MVNOgreAnimationScalingBack); any
// other number moves nothing. Held by the clip's scene node, which builds it
// when a type is set. Render thread only.
class MVN_OGRE_API MVNOgreAnimation {
public:
    MVNOgreAnimation(const std::string& sceneName, Ogre::SceneNode* node, const Ogre::Vector3& position, int type);
    ~MVNOgreAnimation();
    MVNOgreAnimation(const MVNOgreAnimation&) = delete;
    MVNOgreAnimation& operator=(const MVNOgreAnimation&) = delete;

    void init();
    void update(int position);
    // The same type keeps the running animation and its progress.
    void setType(int type);
    void setZOrder(int zOrder) { this->zOrder = zOrder; }
    void setLength(int length) { this->length = length; }
    void setPosition(const Ogre::Vector3& position);
    void setOffset(int offset);

    int getType() const { return type; }
    MVNOgreAnimationImpl* getImpl() const { return impl; }

private:
    MVNOgreAnimationImpl* _createAnimation();

    std::string sceneName;
    Ogre::SceneNode* node;               // not owned
    int zOrder = 0;
    int length;                          // frames; ten seconds of the profile
    int type;
    MVNOgreAnimationImpl* impl = nullptr;  // owned; null for a type that moves nothing
    Ogre::Vector3 position;
    int offset = 0;
};

}  // namespace Morvane
