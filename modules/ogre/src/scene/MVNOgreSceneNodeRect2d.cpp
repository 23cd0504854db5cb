#include "scene/MVNOgreSceneNodeRect2d.h"

#include <Ogre.h>
#include <OgreRectangle2D.h>

namespace Morvane {

MVNOgreSceneNodeRect2d::MVNOgreSceneNodeRect2d(const std::string& sceneName, Ogre::MaterialPtr material, int width,
                                               int height)
    : sceneName(sceneName) {
    rectangle = new Ogre::Rectangle2D(true, Ogre::HardwareBuffer::HBU_STATIC_WRITE_ONLY);
    rectangle->setBoundingBox(Ogre::AxisAlignedBox::BOX_INFINITE);
    rectangle->setMaterial(material);
    Ogre::SceneManager* scene = Ogre::Root::getSingleton().getSceneManager(sceneName);
    node = scene->getRootSceneNode()->createChildSceneNode(Ogre::Vector3::ZERO, Ogre::Quaternion::IDENTITY);
    node->attachObject(rectangle);
}

MVNOgreSceneNodeRect2d::~MVNOgreSceneNodeRect2d() {
    delete rectangle;  // detaches itself from the node
    rectangle = nullptr;
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (node && root && root->hasSceneManager(sceneName)) {
        root->getSceneManager(sceneName)->getRootSceneNode()->removeAndDestroyChild(node);
    }
    node = nullptr;
}

void MVNOgreSceneNodeRect2d::setCorners(float left, float top, float right, float bottom) {
    rectangle->setCorners(left, top, right, bottom, true);
}

void MVNOgreSceneNodeRect2d::setVisible(bool visible) { rectangle->setVisible(visible); }

}  // namespace Morvane
