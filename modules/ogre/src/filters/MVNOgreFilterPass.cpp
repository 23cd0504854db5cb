#include "filters/MVNOgreFilterPass.h"

#include <Ogre.h>

#include <algorithm>
#include <OgreDepthBuffer.h>

#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "scene/MVNOgreMaterialFilter.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreFilterPass";

void removeTexture(const std::string& name) {
    Ogre::TextureManager* textures = Ogre::TextureManager::getSingletonPtr();
    if (textures && textures->resourceExists(name, Ogre::RGN_DEFAULT)) {
        textures->unload(name, Ogre::RGN_DEFAULT);
        textures->remove(name, Ogre::RGN_DEFAULT);
    }
}
}  // namespace

MVNOgreFilterPass::MVNOgreFilterPass(const std::string& materialName, int width, int height,
                                     const std::string& inputTexture, const std::string& rttName, int targetWidth,
                                     int targetHeight)
    : mRttName(rttName),
      mSceneName(MVNGeneratorStringId::getSingleton()->genStringId("FilterPassScene")),
      mTargetWidth(targetWidth > 0 ? targetWidth : width),
      mTargetHeight(targetHeight > 0 ? targetHeight : height) {
    Ogre::Root& root = Ogre::Root::getSingleton();
    mScene = root.createSceneManager("DefaultSceneManager", mSceneName);
    // An orthographic camera one unit in front of the quad: a world unit is
    // a texel of the target and the quad covers it exactly.
    mTargetWidth = std::max(1, mTargetWidth);
    mTargetHeight = std::max(1, mTargetHeight);
    mCamera = mScene->createCamera(mSceneName + "Camera");
    mCamera->setProjectionType(Ogre::PT_ORTHOGRAPHIC);
    mCamera->setNearClipDistance(0.5f);
    mCamera->setFarClipDistance(2.0f);
    mCamera->setAspectRatio(static_cast<float>(mTargetWidth) / static_cast<float>(mTargetHeight));
    mCamera->setOrthoWindow(static_cast<float>(mTargetWidth), static_cast<float>(mTargetHeight));
    Ogre::SceneNode* cameraNode = mScene->getRootSceneNode()->createChildSceneNode(Ogre::Vector3(0, 0, 1));
    cameraNode->attachObject(mCamera);

    removeTexture(mRttName);
    // Every pixel is drawn once by a quad that fills the texture: samples
    // beyond one a pixel would only cost.
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().createManual(
        mRttName, Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, mTargetWidth, mTargetHeight, 0, Ogre::PF_A8B8G8R8,
        Ogre::TU_RENDERTARGET);
    mTarget = texture->getBuffer(0, 0)->getRenderTarget(0);
    mTarget->setAutoUpdated(false);
    mTarget->setDepthBufferPool(Ogre::DepthBuffer::POOL_NO_DEPTH);
    Ogre::Viewport* viewport = mTarget->addViewport(mCamera);
    viewport->setClearEveryFrame(false);
    // The pass's material brings its own programs: no generated technique.
    viewport->setMaterialScheme(Ogre::MaterialManager::DEFAULT_SCHEME_NAME);
    viewport->setOverlaysEnabled(false);
    viewport->setShadowsEnabled(false);
    MVNOgreContextBase::resyncCurrentRenderTarget();

    mMaterial = new MVNOgreMaterialFilter(materialName, width, height, inputTexture);
    if (!mMaterial->getMaterial()) {
        log_error(kTag, "MaterialImpl create error");
        delete mMaterial;
        mMaterial = nullptr;
        return;
    }
    // The pass's result replaces the texture's pixels, alpha included; the
    // second pass blends where the filter's picture goes.
    Ogre::Pass* pass = mMaterial->getMaterial()->getTechnique(0)->getPass(0);
    pass->setSceneBlending(Ogre::SBT_REPLACE);
    // Texture coordinates (0, 0) at the top left, as on every filter quad.
    float w = mTargetWidth / 2.0f;
    float h = mTargetHeight / 2.0f;
    mQuad = mScene->createManualObject();
    mQuad->begin(mMaterial->getMaterial()->getName(), Ogre::RenderOperation::OT_TRIANGLE_LIST,
                 mMaterial->getMaterial()->getGroup());
    mQuad->position(-w, -h, 0);
    mQuad->textureCoord(0, 1);
    mQuad->position(w, -h, 0);
    mQuad->textureCoord(1, 1);
    mQuad->position(w, h, 0);
    mQuad->textureCoord(1, 0);
    mQuad->position(-w, h, 0);
    mQuad->textureCoord(0, 0);
    mQuad->quad(0, 1, 2, 3);
    mQuad->end();
    mScene->getRootSceneNode()->attachObject(mQuad);
}

MVNOgreFilterPass::~MVNOgreFilterPass() {
    // The quad goes before the material it is drawn with, the texture
    // before the scene whose camera its viewport shows. After the engine was
    // shut down there is nothing left to destroy.
    Ogre::Root* root = Ogre::Root::getSingletonPtr();
    bool engine = root && root->hasSceneManager(mSceneName);
    if (engine && mQuad) mScene->destroyManualObject(mQuad);
    mQuad = nullptr;
    delete mMaterial;
    mMaterial = nullptr;
    removeTexture(mRttName);
    mTarget = nullptr;
    if (engine) root->destroySceneManager(mScene);
    mScene = nullptr;
    MVNOgreContextBase::resyncCurrentRenderTarget();
}

void MVNOgreFilterPass::draw() {
    if (mTarget && mMaterial) mTarget->update(true);
}

void MVNOgreFilterPass::updateTexture(uint8_t* data, int width, int height) {
    if (mMaterial) mMaterial->updateTexture(data, width, height);
}

void MVNOgreFilterPass::setUniformFloat(const std::string& name, float value) {
    if (mMaterial == nullptr) return;
    Ogre::Pass* pass = mMaterial->getMaterial()->getTechnique(0)->getPass(0);
    if (!pass->hasFragmentProgram()) return;
    Ogre::GpuProgramParametersSharedPtr params = pass->getFragmentProgramParameters();
    if (params->_findNamedConstantDefinition(name)) params->setNamedConstant(name, value);
}

}  // namespace Morvane
