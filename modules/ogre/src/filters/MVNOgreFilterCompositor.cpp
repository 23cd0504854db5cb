#include "filters/MVNOgreFilterCompositor.h"

#include <Ogre.h>

#include <cmath>

#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreFilterCompositor";
const char* const kCameraName = "MorvaneFilterCamera";
const float kCameraDistance = 10000.0f;
// Above the window's own viewport (0), so the compositor sees the scene last.
const int kViewportZOrder = 1;
}  // namespace

MVNOgreFilterCompositor::MVNOgreFilterCompositor(const std::string& compositorName, int width, int height, int zOrder)
    : mCompositorName(compositorName), mZOrder(zOrder), mWidth(width), mHeight(height) {}

MVNOgreFilterCompositor::~MVNOgreFilterCompositor() {
    if (mCamera) release();
}

int MVNOgreFilterCompositor::init() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _init(); }, "filterInit");
    return 0;
}

int MVNOgreFilterCompositor::_init() {
    Ogre::CompositorPtr compositor = Ogre::CompositorManager::getSingleton().getByName(mCompositorName);
    if (!compositor) {
        log_error(kTag, "compositor dont have %s", mCompositorName.c_str());
        return -1;
    }
    compositor->load();
    Ogre::CompositionTechnique* technique =
        compositor->getNumTechniques() > 0 ? compositor->getTechnique(0) : nullptr;
    Ogre::CompositionTargetPass* output = technique ? technique->getOutputTargetPass() : nullptr;
    Ogre::CompositionPass* pass = output && !output->getPasses().empty() ? output->getPasses().front() : nullptr;
    if (pass == nullptr || !pass->getMaterial()) {
        log_error(kTag, "compositor dont have material %s", mCompositorName.c_str());
        return -1;
    }
    mSize[0] = static_cast<float>(mWidth);
    mSize[1] = static_cast<float>(mHeight);
    MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
    Ogre::SceneManager* scene = context ? context->getSceneManager() : nullptr;
    Ogre::RenderWindow* window = context ? context->getRenderWindow() : nullptr;
    if (scene == nullptr || window == nullptr) {
        log_error(kTag, "renderWin is null");
        return -1;
    }
    if (window->hasViewportWithZOrder(kViewportZOrder) || scene->hasCamera(kCameraName)) {
        log_error(kTag, "compositor %s: another filter compositor is running", mCompositorName.c_str());
        return -1;
    }
    mCamera = scene->createCamera(kCameraName);
    mCamera->setNearClipDistance(5.0f);
    mCamera->setFarClipDistance(kCameraDistance);
    mCamera->setAutoAspectRatio(true);
    mCamera->setFOVy(Ogre::Radian(2.0f * std::atan(float(mHeight / 2) / kCameraDistance)));
    mCameraNode = scene->getRootSceneNode()->createChildSceneNode();
    mCameraNode->setPosition(0, 0, kCameraDistance);
    mCameraNode->attachObject(mCamera);

    mViewport = window->addViewport(mCamera, kViewportZOrder, 0, 0, 1, 1);
    mViewport->setAutoUpdated(true);
    mViewport->setClearEveryFrame(true, Ogre::FBT_COLOUR | Ogre::FBT_DEPTH);
    Ogre::CompositorManager::getSingleton().addCompositor(mViewport, mCompositorName, -1);
    Ogre::CompositorManager::getSingleton().setCompositorEnabled(mViewport, mCompositorName, true);
    return 0;
}

void MVNOgreFilterCompositor::release() {
    MVNOgreManager::getSingleton()->callRenderableWait([this]() { _release(); }, "filterRelease");
}

void MVNOgreFilterCompositor::_release() {
    MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
    Ogre::SceneManager* scene = context ? context->getSceneManager() : nullptr;
    Ogre::RenderWindow* window = context ? context->getRenderWindow() : nullptr;
    if (mViewport) {
        Ogre::CompositorManager& compositors = Ogre::CompositorManager::getSingleton();
        if (compositors.hasCompositorChain(mViewport)) compositors.removeCompositorChain(mViewport);
        if (window) window->removeViewport(kViewportZOrder);
        mViewport = nullptr;
    }
    if (scene && mCameraNode) scene->destroySceneNode(mCameraNode);
    if (scene && mCamera) scene->destroyCamera(mCamera);
    mCameraNode = nullptr;
    mCamera = nullptr;
}

}  // namespace Morvane
