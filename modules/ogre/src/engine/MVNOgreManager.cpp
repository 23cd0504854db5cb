#include "engine/MVNOgreManager.h"

#include <OgreCamera.h>
#include <OgreResourceGroupManager.h>

#include <algorithm>
#include <cmath>
#include <atomic>
#include <cstring>
#include <exception>
#include <memory>
#include <mutex>

#include "core/MVNByteBufferPool.h"
#include "core/MVNGeometry.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContext.h"
#include "engine/MVNOgreContextSDL.h"
#include "engine/MVNOgreCoverLayer.h"
#include "engine/MVNOgreRenderQueue.h"
#include "engine/MVNOgreRenderable.h"
#include "scene/MVNOgreSceneManager.h"
#include "engine/MVNPool.h"

namespace Morvane {

static const char* const kTag = "Morvane::MVNOgreManager";

// Built when the library is loaded and never destroyed: services may still
// post to it while the process winds down.
MVNOgreManager* MVNOgreManager::mInstance = new MVNOgreManager();

MVNOgreManager* MVNOgreManager::getSingleton() { return mInstance; }

MVNOgreManager::MVNOgreManager() : mProfile("hdv_540_24p") {}

MVNOgreManager::~MVNOgreManager() = default;

int MVNOgreManager::startQueueOnly(const MVNProfile& profile) {
    mProfile = profile;
    // A queue left by a failed init, or by an earlier call, keeps running:
    // there is only ever one render thread.
    if (!mRenderablePool) {
        mRenderablePool = new MVNPool<MVNOgreRenderable>();
    }
    if (!mRenderQueue) {
        mRenderQueue = new MVNOgreRenderQueue();
        mRenderQueue->start();
    }
    return 0;
}

int MVNOgreManager::init(const MVNProfile& profile, int renderWinWidth, int renderWinHeight) {
    log_debug(kTag, "init...");
    if (mInited) {
        // A second engine in the same process would fight over the GL context.
        log_error(kTag, "init refused, already inited; release first");
        return -1;
    }
    startQueueOnly(profile);
    log_info(kTag, "profile size:%dx%d, render_win_size:%dx%d", mProfile.width(), mProfile.height(),
             renderWinWidth, renderWinHeight);

    int width = renderWinWidth;
    int height = renderWinHeight;
    if (width == 0 || height == 0) {
        width = mProfile.width();
        height = mProfile.height();
    }
    if (width % 2 != 0 || height % 2 != 0) {
        log_error(kTag, "error render win size:%dx%d, must be even", width, height);
        return -1;
    }

    if (mContext) {
        // Left by an earlier init whose engine bring-up failed.
        MVNOgreContextBase* stale = mContext;
        mContext = nullptr;
        callRenderableWait([stale]() { stale->closeApp(); }, "OgreContextRelease");
        delete stale;
    }
    if (mOnScreenWindow) {
        mContext = new MVNOgreContextSDL("Morvane", width, height, true);
    } else {
        mContext = new MVNOgreContext("Morvane", width, height);
    }
    mShownWidth = width;
    mShownHeight = height;

    // The whole engine comes up on the render thread, which from then on is
    // the one thread that owns the GL context. The result is shared, not a
    // local, in case the wait gives up while the bring-up still runs.
    auto result = std::make_shared<std::atomic<int>>(-1);
    MVNOgreContextBase* context = mContext;
    callRenderableWait([context, result]() { *result = context->initApp(); }, "OgreContextInit");
    if (*result != 0) {
        return -1;
    }

    for (const std::string& folder : mResourceLocations) _addResourceLocationNow(folder);
    mRenderOneFrameCall = [this]() { _renderOneFrame(); };
    if (width != mProfile.width() || height != mProfile.height()) {
        _createCoverLayer("CoverLayer init error");
    }
    mInited = true;
    log_debug(kTag, "init done");
    return 0;
}

void MVNOgreManager::addResourceLocation(const std::string& folder) {
    if (folder.empty() ||
        std::find(mResourceLocations.begin(), mResourceLocations.end(), folder) != mResourceLocations.end()) {
        return;
    }
    mResourceLocations.push_back(folder);
    if (mInited) _addResourceLocationNow(folder);
}

void MVNOgreManager::_addResourceLocationNow(const std::string& folder) {
    callRenderableWait(
        [folder]() {
            try {
                Ogre::ResourceGroupManager::getSingleton().addResourceLocation(folder, "FileSystem",
                                                                               Ogre::RGN_DEFAULT);
                log_info(kTag, "resource location added:%s", folder.c_str());
            } catch (const std::exception& e) {
                log_error(kTag, "resource location %s refused: %s", folder.c_str(), e.what());
            }
        },
        "addResourceLocation");
}

void MVNOgreManager::_createCoverLayer(const char* warning) {
    mCoverLayer = new MVNOgreCoverLayer();
    if (mCoverLayer->init() != 0) {
        log_warn(kTag, "%s", warning);
        mCoverLayer->release();
        delete mCoverLayer;
        mCoverLayer = nullptr;
    }
}

void MVNOgreManager::release() {
    log_debug(kTag, "release...");
    if (mCoverLayer) {
        mCoverLayer->release();
        delete mCoverLayer;
        mCoverLayer = nullptr;
    }
    // Scenes first, then the engine, both on the thread that owns the GL
    // context.
    callRenderableWait(
        [this]() {
            while (!mSceneManagersToDestroy.empty()) {
                MVNOgreSceneManager* sceneManager = mSceneManagersToDestroy.front();
                mSceneManagersToDestroy.pop_front();
                delete sceneManager;
            }
            if (mContext) {
                mContext->closeApp();
            }
        },
        "OgreContextRelease");
    if (mRenderQueue) {
        // Runs whatever is still queued before the thread ends.
        mRenderQueue->stop();
        delete mRenderQueue;
        mRenderQueue = nullptr;
    }
    if (mRenderablePool) {
        delete mRenderablePool;
        mRenderablePool = nullptr;
    }
    if (mContext) {
        delete mContext;
        mContext = nullptr;
    }
    mWindow = nullptr;
    mView = nullptr;
    mViewController = nullptr;
    mInited = false;
    log_debug(kTag, "release done");
}

void MVNOgreManager::_destroyOgreContext() {
    if (mContext) {
        mContext->closeApp();
        delete mContext;
        mContext = nullptr;
    }
}

void MVNOgreManager::setProfile(const MVNProfile& profile) {
    mProfile = profile;
    if (!mInited) {
        return;
    }
    // An on-screen window fits the new profile at its next picture.
    mShownWidth = 0;
    if (mCoverLayer) {
        // Also when the sizes have come to match: update hides the bars.
        mCoverLayer->update();
        return;
    }
    if (mContext && mProfile.width() == mContext->getWidth() && mProfile.height() == mContext->getHeight()) {
        return;
    }
    _createCoverLayer("cover layer init error");
}

int MVNOgreManager::injectObject(const char* name, void* object) {
    const char* key = name ? name : "";
    log_info(kTag, "injectObject:%s, %p", key, object);
    if (std::strcmp(key, "window") == 0) {
        if (mWindow) {
            log_info(kTag, "window object already injected, replace with new");
        }
        mWindow = object;
        return 0;
    }
    if (std::strcmp(key, "assetManager") == 0) {
        if (mAssetManager) {
            log_info(kTag, "assetManager object already injected, replace with new");
        }
        mAssetManager = object;
        return 0;
    }
    if (std::strcmp(key, "view") == 0) {
        if (mView) {
            log_info(kTag, "view object already injected, replace with new");
        }
        mView = object;
        return 0;
    }
    if (std::strcmp(key, "viewController") == 0) {
        // The platform's controller owns the view hierarchy; the first one
        // stays in charge.
        if (mViewController) {
            log_info(kTag, "view controller already injected, replace with new");
            return -1;
        }
        mViewController = object;
        return 0;
    }
    log_error(kTag, "error inject object:%s", key);
    return -1;
}

MVNOgreRenderable* MVNOgreManager::_takeRenderable(std::function<void()>& call, const char* name, bool forWait) {
    const char* label = name ? name : "";
    MVNOgreRenderable* renderable = mRenderablePool->get();
    if (renderable) {
        if (forWait) {
            renderable->reset();
        }
        renderable->setCallback(std::move(call));
    } else {
        renderable = new MVNOgreRenderable(std::move(call));
        renderable->setUsePool(true);
        log_debug(kTag, forWait ? "callRenderableWait gen new Renderable %p for %s"
                                : "callRenderable gen new Renderable %p for %s",
                  static_cast<void*>(renderable), label);
    }
    renderable->setName(label);
    return renderable;
}

void MVNOgreManager::callRenderable(std::function<void()> call, const char* name) {
    if (!mRenderablePool || !mRenderQueue) {
        return;
    }
    mRenderQueue->addRenderable(_takeRenderable(call, name, false));
}

void MVNOgreManager::callRenderableWait(std::function<void()> call, const char* name) {
    if (!mRenderablePool || !mRenderQueue) {
        return;
    }
    mRenderQueue->addRenderableWait(_takeRenderable(call, name, true));
}

void MVNOgreManager::recycleRenderable(MVNOgreRenderable* renderable) {
    if (!renderable) {
        return;
    }
    if (!renderable->isUsePool() || !mRenderablePool) {
        delete renderable;
        return;
    }
    mRenderablePool->put(renderable);
}

void MVNOgreManager::delayDestroySceneManager(MVNOgreSceneManager* sceneManager) {
    if (sceneManager) {
        mSceneManagersToDestroy.push_back(sceneManager);
    }
}

void MVNOgreManager::_renderOneFrame() {
    if (mContext) {
        mContext->renderOneFrame();
    }
}

void MVNOgreManager::_followWindowSize() {
    if (!mOnScreenWindow || !mContext || !mInited) return;
    // The window's size changes on the render thread, in its event pump.
    MVNOgreContextBase* context = mContext;
    int w = 0;
    int h = 0;
    callRenderableWait(
        [context, &w, &h]() {
            w = context->getDisplayWidth();
            h = context->getDisplayHeight();
        },
        "windowSize");
    if (w <= 0 || h <= 0 || (w == mShownWidth && h == mShownHeight)) return;
    mShownWidth = w;
    mShownHeight = h;
    log_info(kTag, "window resized:%dx%d", w, h);
    // The layout stays in world units of the size asked for at init; a
    // window of another shape sees more of the plane across or down.
    const int layoutW = mContext->getWidth();
    const int layoutH = mContext->getHeight();
    double visibleH = static_cast<double>(layoutH);
    if (static_cast<long long>(w) * layoutH < static_cast<long long>(layoutW) * h) {
        visibleH = static_cast<double>(layoutW) * h / w;
    }
    callRenderableWait(
        [context, visibleH]() {
            if (Ogre::Camera* camera = context->getCamera()) {
                camera->setFOVy(Ogre::Radian(static_cast<float>(2.0 * std::atan(visibleH / 2.0 / 10000.0))));
            }
        },
        "fitWindow");
    if (!mCoverLayer) {
        mCoverLayer = new MVNOgreCoverLayer();
        mCoverLayer->init();
    }
    mCoverLayer->update(mProfile.width(), mProfile.height(), w, h);
}

void MVNOgreManager::renderOneFrame() {
    _followWindowSize();
    std::function<void()> call = mRenderOneFrameCall;
    callRenderableWait(call, "RenderOneFrame");
}

namespace {
// Where the render thread leaves a read-back picture. Shared between the
// caller and the posted call, so that a picture that arrives after the
// caller gave up waiting goes back to its pool instead of being lost.
struct RenderImageSlot {
    std::mutex lock;
    MVNByteBuffer* image = nullptr;
    bool abandoned = false;
};
}  // namespace

MVNByteBuffer* MVNOgreManager::getRenderImage() {
    _followWindowSize();
    mRenderImage = nullptr;
    auto slot = std::make_shared<RenderImageSlot>();
    callRenderableWait(
        [this, slot]() {
            if (!mContext) {
                return;
            }
            mContext->preGetRenderImage();
            MVNByteBuffer* image = mContext->getRenderImage();
            mContext->postGetRenderImage();
            std::lock_guard<std::mutex> guard(slot->lock);
            if (slot->abandoned) {
                MVNByteBufferPool::sRelease(image);
                return;
            }
            slot->image = image;
        },
        "ogreGetRenderImage");
    std::lock_guard<std::mutex> guard(slot->lock);
    slot->abandoned = true;
    mRenderImage = slot->image;
    return slot->image;
}

MVNFrame* MVNOgreManager::getRenderFrame() {
    if (!mContext || !mContext->supportAsync()) {
        log_error(kTag, "getRenderFrame, not support async mode");
        return nullptr;
    }
    return mContext->getRenderFrame();
}

void MVNOgreManager::updateRenderImage(int time) {
    if (!mContext) {
        return;
    }
    // The time travels through the reader's own field; the posted call only
    // asks the reader to catch up.
    mContext->updateRenderTime(time);
    callRenderable(
        [this]() {
            if (mContext) {
                mContext->updateRenderImage(-1);
            }
        },
        "updateReader");
}

void MVNOgreManager::registerFrameListener(MVNFrameListener* listener) {
    if (mContext) {
        mContext->registerFrameListener(listener);
    }
}

void MVNOgreManager::unregisterFrameListener(MVNFrameListener* listener) {
    if (mContext) {
        mContext->unregisterFrameListener(listener);
    }
}

void MVNOgreManager::addInputListener(InputListener* listener) {
    if (!mContext) {
        return;
    }
    try {
        mContext->addInputListener(listener);
    } catch (const std::exception& e) {
        log_error(kTag, "addInputListener failed: %s", e.what());
    }
}

void MVNOgreManager::removeInputListener(InputListener* listener) {
    if (!mContext) {
        return;
    }
    try {
        mContext->removeInputListener(listener);
    } catch (const std::exception& e) {
        log_error(kTag, "removeInputListener failed: %s", e.what());
    }
}

bool MVNOgreManager::isBusy() {
    if (!mContext || !mRenderQueue) {
        return false;
    }
    return mRenderQueue->hasRenderable();
}

MVNRect MVNOgreManager::adjustGeometryProfileToWorld(const MVNRect& rect) {
    if (!mContext) {
        return rect;
    }
    return convertGeometryProfileToWorld2(rect, mProfile.width(), mProfile.height(), mContext->getWidth(),
                                          mContext->getHeight());
}

MVNPoint MVNOgreManager::adjustPointScreenToProfile(const MVNPoint& point) {
    if (!mContext) {
        return point;
    }
    return convertPointScreenToProfile(point, mProfile.width(), mProfile.height(), mContext->getWidth(),
                                       mContext->getHeight());
}

MVNRect MVNOgreManager::adjustGeometryProfileToScreen(const MVNRect& rect) {
    if (!mContext) {
        return rect;
    }
    return convertGeometryProfileToScreen(rect, mProfile.width(), mProfile.height(), mContext->getWidth(),
                                          mContext->getHeight());
}

MVNRect MVNOgreManager::adjustGeometryScreenToProfile(const MVNRect& rect) {
    if (!mContext) {
        return rect;
    }
    return convertGeometryScreenToProfile(rect, mProfile.width(), mProfile.height(), mContext->getWidth(),
                                          mContext->getHeight());
}

int MVNOgreManager::getRenderWindowWidth() { return mContext ? mContext->getWidth() : 0; }

int MVNOgreManager::getRenderWindowHeight() { return mContext ? mContext->getHeight() : 0; }

// The camera of the shared scene, or null with "camera is null" logged.
static Ogre::Camera* cameraOf(MVNOgreContextBase* context, const char* tag) {
    Ogre::Camera* camera = context ? context->getCamera() : nullptr;
    if (!camera) {
        log_error(tag, "camera is null");
    }
    return camera;
}

float MVNOgreManager::getCameraNearClipDistance() {
    Ogre::Camera* camera = cameraOf(mContext, kTag);
    return camera ? camera->getNearClipDistance() : 0.0f;
}

float MVNOgreManager::getCameraFarClipDistance() {
    Ogre::Camera* camera = cameraOf(mContext, kTag);
    return camera ? camera->getFarClipDistance() : 0.0f;
}

float MVNOgreManager::getCameraDistance() {
    Ogre::Camera* camera = cameraOf(mContext, kTag);
    return camera ? camera->getRealPosition().z : 0.0f;
}

}  // namespace Morvane
