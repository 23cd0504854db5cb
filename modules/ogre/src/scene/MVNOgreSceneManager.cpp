#include "scene/MVNOgreSceneManager.h"

#include <OgreCamera.h>
#include <OgreHardwarePixelBuffer.h>
#include <OgreLight.h>
#include <OgreRenderTexture.h>
#include <OgreRoot.h>
#include <OgreSceneManager.h>
#include <OgreTextureManager.h>
#include <OgreViewport.h>
#include <RTShaderSystem/OgreShaderGenerator.h>

#include <cmath>

#include "core/MVNGeneratorStringId.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreDepthClear.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

// The camera stands this far in front of the picture plane z = 0.
static const float kCameraZ = 10000.0f;

// Unloads and forgets a texture of this name, so that a left-over of an
// earlier scene can't stand in for a new one.
static void removeTexture(const std::string& name) {
    Ogre::TextureManager& textures = Ogre::TextureManager::getSingleton();
    if (textures.resourceExists(name, Ogre::RGN_DEFAULT)) {
        textures.unload(name, Ogre::RGN_DEFAULT);
        textures.remove(name, Ogre::RGN_DEFAULT);
    }
}

MVNOgreSceneManager::MVNOgreSceneManager(int width, int height, const std::string& rttName,
                                         const std::string& sceneName)
    : mSceneName(sceneName), mRttName(rttName), mWidth(width), mHeight(height) {
    if (mSceneName.empty()) {
        mSceneName = MVNGeneratorStringId::getSingleton()->genStringId("MVNSceneManager");
    }
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    Ogre::SceneManager* scene = root->createSceneManager("DefaultSceneManager", mSceneName);
    scene->setAmbientLight(Ogre::ColourValue(1, 1, 1));
    if (auto* generator = Ogre::RTShader::ShaderGenerator::getSingletonPtr()) {
        generator->addSceneManager(scene);
    }

    Ogre::Light* light = scene->createLight(MVNGeneratorStringId::getSingleton()->genStringId("SCMRLight"));
    Ogre::SceneNode* lightNode = scene->getRootSceneNode()->createChildSceneNode();
    lightNode->setPosition(0, 0, kCameraZ);
    lightNode->attachObject(light);

    // With the camera at z 10000 this angle makes a quad of the texture's
    // height at z 0 fill the picture exactly: world units are pixels.
    Ogre::Camera* camera = scene->createCamera(MVNGeneratorStringId::getSingleton()->genStringId("SCMRCam"));
    camera->setNearClipDistance(5.0f);
    camera->setFarClipDistance(kCameraZ);
    camera->setAutoAspectRatio(true);
    camera->setFOVy(Ogre::Radian(2.0f * std::atan(float(height / 2) / kCameraZ)));
    Ogre::SceneNode* cameraNode = scene->getRootSceneNode()->createChildSceneNode();
    cameraNode->setPosition(0, 0, kCameraZ);
    cameraNode->attachObject(camera);

    int fsaa = 0;
    if (MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext()) {
        fsaa = context->chooseAntiAliasingLevel();
    }
    removeTexture(mRttName);
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().createManual(
        mRttName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D, width, height, 1, 0,
        Ogre::PF_A8B8G8R8, Ogre::TU_RENDERTARGET, nullptr, false, fsaa);
    mWidth = static_cast<int>(texture->getWidth());
    mHeight = static_cast<int>(texture->getHeight());

    mRenderTarget = texture->getBuffer(0, 0)->getRenderTarget(0);
    Ogre::Viewport* viewport = mRenderTarget->addViewport(camera, 0, 0.0f, 0.0f, 1.0f, 1.0f);
    viewport->setAutoUpdated(true);
    // Colour and depth are cleared to transparent black, so that what the
    // scene leaves empty stays see-through.
    viewport->setClearEveryFrame(true, Ogre::FBT_COLOUR | Ogre::FBT_DEPTH);
    viewport->setBackgroundColour(Ogre::ColourValue::ZERO);
    MVNOgreDepthClear::watch(mRenderTarget);
    MVNOgreContextBase::resyncCurrentRenderTarget();
}

MVNOgreSceneManager::~MVNOgreSceneManager() {
    // After the engine was shut down there is nothing left to destroy.
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (!root || !root->hasSceneManager(mSceneName)) {
        return;
    }
    Ogre::SceneManager* scene = root->getSceneManager(mSceneName);
    if (Ogre::TextureManager::getSingletonPtr()) {
        removeTexture(mRttName);
        MVNOgreContextBase::resyncCurrentRenderTarget();
    }
    if (auto* generator = Ogre::RTShader::ShaderGenerator::getSingletonPtr()) {
        generator->removeSceneManager(scene);
    }
    root->destroySceneManager(scene);
}

Ogre::SceneManager* MVNOgreSceneManager::getSceneManager() const {
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    if (!root || !root->hasSceneManager(mSceneName)) {
        return nullptr;
    }
    return root->getSceneManager(mSceneName);
}

}  // namespace Morvane
