#include "engine/MVNOgreRenderSystem.h"

#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "transitions/MVNTransitionNames.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNRenderSystem";

MVNOgreRenderSystem::MVNOgreRenderSystem(const MVNProfile& profile, int renderWinWidth, int renderWinHeight)
    : mProfile(profile),
      mManager(MVNOgreManager::getSingleton()),
      mRenderWinWidth(renderWinWidth),
      mRenderWinHeight(renderWinHeight) {}

MVNOgreRenderSystem::~MVNOgreRenderSystem() = default;

int MVNOgreRenderSystem::init() {
    log_info(TAG, "init...");
    if (mManager->init(mProfile, mRenderWinWidth, mRenderWinHeight) != 0) {
        log_error(TAG, "Ogre Manager init failed");
        return -1;
    }
    mInitialized = true;
    MVNTransitionNames::registerMaterials();
    log_info(TAG, "init done");
    return 0;
}

void MVNOgreRenderSystem::release() {
    if (!mInitialized) return;
    mManager->release();
    mInitialized = false;
}

void MVNOgreRenderSystem::renderOneFrame() {
    if (!mInitialized) {
        log_error(TAG, "renderOneFrame failed, render system not initialized");
        return;
    }
    mManager->renderOneFrame();
}

MVNByteBuffer* MVNOgreRenderSystem::getRenderImage() {
    if (!mInitialized) {
        log_error(TAG, "getRenderImage failed, render system not initialized");
        return nullptr;
    }
    return mManager->getRenderImage();
}

MVNFrame* MVNOgreRenderSystem::getRenderFrame() {
    if (!mInitialized) {
        log_error(TAG, "getRenderFrame failed, render system not initialized");
        return nullptr;
    }
    return mManager->getRenderFrame();
}

void MVNOgreRenderSystem::updateRenderImage(int time) {
    if (!mInitialized) {
        log_error(TAG, "updateRenderImage failed, render system not initialized");
        return;
    }
    mManager->updateRenderImage(time);
}

void MVNOgreRenderSystem::registerFrameListener(MVNFrameListener* listener) {
    if (!mInitialized) {
        log_error(TAG, "registerFrameListener failed, render system not initialized");
        return;
    }
    mManager->registerFrameListener(listener);
}

void MVNOgreRenderSystem::unregisterFrameListener(MVNFrameListener* listener) {
    if (!mInitialized) {
        log_error(TAG, "unregisterFrameListener failed, render system not initialized");
        return;
    }
    mManager->unregisterFrameListener(listener);
}

void MVNOgreRenderSystem::injectObject(const char* name, void* object) {
    // Allowed before init: hosts hand over their window objects first.
    log_info(TAG, "injectObject:%s, %p", name ? name : "(null)", object);
    mManager->injectObject(name, object);
}

MVNRect MVNOgreRenderSystem::adjustGeometryProfileToWorld(const MVNRect& rect) {
    if (!mInitialized) {
        log_error(TAG, "adjustGeometryProfileToWorld failed, render system not initialized");
        return rect;
    }
    return mManager->adjustGeometryProfileToWorld(rect);
}

MVNPoint MVNOgreRenderSystem::adjustPointScreenToProfile(const MVNPoint& point) {
    if (!mInitialized) {
        log_error(TAG, "adjustPointScreenToProfile failed, render system not initialized");
        return point;
    }
    return mManager->adjustPointScreenToProfile(point);
}

MVNRect MVNOgreRenderSystem::adjustGeometryProfileToScreen(const MVNRect& rect) {
    if (!mInitialized) {
        log_error(TAG, "adjustGeometryProfileToScreen failed, render system not initialized");
        return rect;
    }
    return mManager->adjustGeometryProfileToScreen(rect);
}

MVNRect MVNOgreRenderSystem::adjustGeometryScreenToProfile(const MVNRect& rect) {
    if (!mInitialized) {
        log_error(TAG, "adjustGeometryScreenToProfile failed, render system not initialized");
        return rect;
    }
    return mManager->adjustGeometryScreenToProfile(rect);
}

int MVNOgreRenderSystem::getRenderWindowWidth() {
    if (!mInitialized) {
        log_error(TAG, "getRenderWindowWidth failed, render system not initialized");
        return 0;
    }
    return mManager->getRenderWindowWidth();
}

int MVNOgreRenderSystem::getRenderWindowHeight() {
    if (!mInitialized) {
        log_error(TAG, "getRenderWindowHeight failed, render system not initialized");
        return 0;
    }
    return mManager->getRenderWindowHeight();
}

bool MVNOgreRenderSystem::isBusy() { return mInitialized && mManager->isBusy(); }

void MVNOgreRenderSystem::setProfile(const MVNProfile& profile) {
    mProfile = profile;
    mManager->setProfile(profile);
}

}  // namespace Morvane
