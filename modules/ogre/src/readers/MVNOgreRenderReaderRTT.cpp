#include "readers/MVNOgreRenderReaderRTT.h"

#include <Ogre.h>

#include "core/AutoLock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "services/MVNFrameListener.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreMultisampleChoice.h"

namespace Morvane {

// Forwards the engine's end-of-update hook of the read target.
class MVNOgreRenderReaderRTT::TargetHook : public Ogre::RenderTargetListener {
public:
    explicit TargetHook(MVNOgreRenderReaderRTT* owner) : mOwner(owner) {}
    void postRenderTargetUpdate(const Ogre::RenderTargetEvent& evt) override { mOwner->postRenderTargetUpdate(); }

private:
    MVNOgreRenderReaderRTT* mOwner;
};

MVNOgreRenderReaderRTT::MVNOgreRenderReaderRTT(MVNOgreContextBase* context) : MVNOgreRenderReader(context) {}

MVNOgreRenderReaderRTT::~MVNOgreRenderReaderRTT() { detachHook(); }

const char* MVNOgreRenderReaderRTT::tag() const { return "Morvane::RenderReaderRTT"; }

MVNOgreRenderReaderRTT* MVNOgreRenderReaderRTT::create(MVNOgreContextBase* context, bool antiAliasing) {
    MVNOgreRenderReaderRTT* reader = new MVNOgreRenderReaderRTT(context);
    reader->setAntiAliasing(antiAliasing);
    if (reader->init() != 0) {
        log_error(reader->tag(), "init failed");
        delete reader;
        return nullptr;
    }
    return reader;
}

void MVNOgreRenderReaderRTT::attachHook(Ogre::RenderTarget* target) {
    if (!target) return;
    if (!mHook) mHook.reset(new TargetHook(this));
    target->addListener(mHook.get());
    mHookedTargets.push_back(target);
}

void MVNOgreRenderReaderRTT::detachHook() {
    if (mHook) {
        for (Ogre::RenderTarget* target : mHookedTargets) target->removeListener(mHook.get());
    }
    mHookedTargets.clear();
}

void MVNOgreRenderReaderRTT::chooseTarget() {
    mCurrentTarget = mRenderTarget;
    if (mPlainTarget) {
        Ogre::Camera* camera = mContext->getCamera();
        bool needed = MVNOgreMultisampleChoice::needed(camera ? camera->getSceneManager() : nullptr, camera, mWidth,
                                                       mHeight);
        if (!needed) mCurrentTarget = mPlainTarget;
    }
    bool multisampled = mCurrentTarget == mRenderTarget && mFSAA > 0;
    if (multisampled != mLastMultisampled) log_debug(tag(), "multisampled:%d", multisampled);
    mLastMultisampled = multisampled;
}

int MVNOgreRenderReaderRTT::init() {
    const char* t = tag();
    log_debug(t, "init");
    log_debug(t, "gammaCorrection:%d antiAliasing:%d", mGammaCorrection, mAntiAliasing);
    try {
        MVNOgreRenderReader::init();
        Ogre::Camera* camera = mContext->getCamera();
        Ogre::TexturePtr texture = createReadTexture(t, mFSAA);
        Ogre::RenderTarget* target = texture->getBuffer(0, 0)->getRenderTarget();
        addReadViewport(target, camera);
        attachHook(target);
        mRenderTarget = target;
        mTexture = texture;
        if (mFSAA > 0 && MVNOgreMultisampleChoice::automatic()) {
            // The twin: as createReadTexture makes "RttTex", single-sampled.
            mPlainTexture = Ogre::TextureManager::getSingleton().createManual(
                "RttTexPlain", Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, mWidth, mHeight, 0,
                static_cast<Ogre::PixelFormat>(mPixelFormat), Ogre::TU_RENDERTARGET, nullptr, mGammaCorrection, 0);
            mPlainTarget = mPlainTexture->getBuffer(0, 0)->getRenderTarget();
            addReadViewport(mPlainTarget, camera);
            attachHook(mPlainTarget);
        }
    } catch (const std::exception& e) {
        log_error(t, "init error %s", e.what());
        return -1;
    }
    mBoxWidth = mWidth;
    mBoxHeight = mHeight;
    mMode = MODE_ASYNC;
    log_debug(t, "init done");
    return 0;
}

void MVNOgreRenderReaderRTT::release() {
    detachHook();
    mDoubleFrame.reset();
    {
        AutoLock guard(mTimesLock);
        mRenderTimes.clear();
    }
    // "RttTex" itself goes with the engine's teardown; only our reference
    // is dropped here, before the root is deleted.
    mTexture.reset();
    mRenderTarget = nullptr;
    mPlainTexture.reset();
    mPlainTarget = nullptr;
    mCurrentTarget = nullptr;
    MVNOgreRenderReader::release();
}

void MVNOgreRenderReaderRTT::copyTarget(Ogre::RenderTarget* target, unsigned char* dst) {
    Ogre::PixelBox pb(mBoxWidth, mBoxHeight, 1, static_cast<Ogre::PixelFormat>(mPixelFormat), dst);
    target->copyContentsToMemory(Ogre::Box(0, 0, mBoxWidth, mBoxHeight), pb, Ogre::RenderTarget::FB_AUTO);
}

void MVNOgreRenderReaderRTT::drawAndCopy(Ogre::RenderTarget* target, unsigned char* dst) {
    target->update(true);
    copyTarget(target, dst);
}

MVNByteBuffer* MVNOgreRenderReaderRTT::getRenderImage() {
    const char* t = tag();
    if (mMode != MODE_SYNC) {
        mMode = MODE_SYNC;
        log_info(t, "changed to sync mode");
    }
    chooseTarget();
    Ogre::RenderTarget* rt = target();
    if (!rt) {
        log_error(t, "getRenderImage failed, renderWin is null");
        return nullptr;
    }
    MVNByteBuffer* buf = MVNByteBufferPool::sAlloc(mWidth * mHeight * mBytesPerPixel);
    if (!buf) {
        log_error(t, "getRenderImage failed, alloc buf error");
        return nullptr;
    }
    try {
        drawAndCopy(rt, buf->ptr());
    } catch (const std::exception& e) {
        log_error(t, "getRenderImage failed, %s", e.what());
        MVNByteBufferPool::getSingleton()->release(buf);
        return nullptr;
    }
    return buf;
}

void MVNOgreRenderReaderRTT::updateRenderTime(int time) {
    if (mMode != MODE_ASYNC) {
        log_error(tag(), "sync mode not support updateRenderTime");
        return;
    }
    if (time < 0) return;
    AutoLock guard(mTimesLock);
    mRenderTimes.push_back(time);
}

void MVNOgreRenderReaderRTT::updateRenderImage(int time) {
    const char* t = tag();
    if (mMode != MODE_ASYNC) {
        log_error(t, "sync mode not support updateRenderImage");
        return;
    }
    chooseTarget();
    Ogre::RenderTarget* rt = target();
    if (!rt) {
        log_error(t, "updateRenderImage failed, renderWin is null");
        return;
    }
    try {
        // Drawn without a swap; the copy happens in postRenderTargetUpdate.
        rt->update(false);
        finishUpdate(rt);
    } catch (const std::exception& e) {
        log_error(t, "updateRenderImage failed, %s", e.what());
    }
}

void MVNOgreRenderReaderRTT::postRenderTargetUpdate() {
    if (mMode != MODE_ASYNC) return;
    Ogre::RenderTarget* rt = target();
    if (!rt) return;
    const char* t = tag();
    int size = mWidth * mHeight * mBytesPerPixel;
    MVNFrame* frame = MVNFrame::pullFromPool(1, size);
    int time = -1;
    {
        // The picture of this update, shown or lost, takes its time with
        // it: a time left queued would stamp every later picture with its
        // predecessor's position.
        AutoLock guard(mTimesLock);
        if (!mRenderTimes.empty()) {
            time = mRenderTimes.front();
            mRenderTimes.pop_front();
        }
    }
    if (!frame) {
        // Once for a run of lost pictures: an exhausted pool stays so for
        // many frames, and the pool itself says why.
        if (mLostPictures++ == 0) log_error(t, "postRenderTargetUpdate failed, pull frame error");
        return;
    }
    if (mLostPictures > 0) {
        log_info(t, "postRenderTargetUpdate pulls frames again, %d pictures lost", mLostPictures);
        mLostPictures = 0;
    }
    copyAfterUpdate(rt, frame->buffer()->ptr());
    frame->setWidth(mWidth);
    frame->setHeight(mHeight);
    frame->setColorFormat(MVN_COLOR_RGBA);
    frame->setFrames(time);
    frame->setSize(size);
    {
        AutoLock guard(mListenerLock);
        if (mFrameListener) {
            mFrameListener->onFrameRendered(frame);
            return;
        }
    }
    mDoubleFrame.update(frame);
}

void MVNOgreRenderReaderRTT::copyAfterUpdate(Ogre::RenderTarget* rt, unsigned char* dst) {
    // For a texture the swap resolves the multisampled picture into it.
    rt->swapBuffers();
    copyTarget(rt, dst);
}

MVNFrame* MVNOgreRenderReaderRTT::getRenderFrame() { return mDoubleFrame.pop_front(); }

void MVNOgreRenderReaderRTT::registerFrameListener(MVNFrameListener* listener) {
    {
        AutoLock guard(mListenerLock);
        if (!mFrameListener) {
            mFrameListener = listener;
            listener = nullptr;
        }
    }
    if (listener) {
        log_error(tag(), "registerFrameListener failed, one listener exist");
        return;
    }
    log_debug(tag(), "registerFrameListener");
}

void MVNOgreRenderReaderRTT::unregisterFrameListener(MVNFrameListener* listener) {
    AutoLock guard(mListenerLock);
    mFrameListener = nullptr;
}

}  // namespace Morvane
