#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"
#include "scene/MVNOgreSceneNodeImpl.h"

namespace Ogre {
class Rectangle2D;
}

namespace Morvane {

// A rectangle given in screen coordinates (-1..1), without depth, never
// culled. Render thread only.
class MVN_OGRE_API MVNOgreSceneNodeRect2d : public MVNOgreSceneNodeImpl {
public:
    // width and height are not used: the corners place the rectangle.
    MVNOgreSceneNodeRect2d(const std::string& sceneName, Ogre::MaterialPtr material, int width, int height);
    ~MVNOgreSceneNodeRect2d() override;
    MVNOgreSceneNodeRect2d(const MVNOgreSceneNodeRect2d&) = delete;
    MVNOgreSceneNodeRect2d& operator=(const MVNOgreSceneNodeRect2d&) = delete;

    void setPosition(float x, float y, float z) override {}
    void setCorners(float left, float top, float right, float bottom) override;
    void setVisible(bool visible) override;
    void setAnimation(int type) override {}
    void updateAnimation(int position) override {}
    void* getAnimationObject() override { return nullptr; }
    void setRotation(int degrees) override {}
    void setZOrder(int zOrder) override {}

    Ogre::Rectangle2D* getRectangle() const { return rectangle; }

private:
    Ogre::SceneNode* node = nullptr;        // child of the scene's root
    std::string sceneName;                  // engine scene manager it lives in
    Ogre::Rectangle2D* rectangle = nullptr;  // owned
    std::string unused;                     // kept empty
};

}  // namespace Morvane
