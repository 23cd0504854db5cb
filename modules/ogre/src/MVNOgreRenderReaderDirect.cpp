#include "MVNOgreRenderReaderDirect.h"

#include <Ogre.h>

#include "MVNByteBuffer.h"
#include "MVNByteBufferPool.h"
#include "MVNLog.h"
#include "MVNOgreContextBase.h"

namespace Morvane {

MVNOgreRenderReaderDirect::MVNOgreRenderReaderDirect(MVNOgreContextBase* context)
    : MVNOgreRenderReaderRTT(context) {}

MVNOgreRenderReaderDirect::~MVNOgreRenderReaderDirect() = default;

const char* MVNOgreRenderReaderDirect::tag() const { return "Morvane::RenderReaderDirect"; }

MVNOgreRenderReaderDirect* MVNOgreRenderReaderDirect::create(MVNOgreContextBase* context) {
    MVNOgreRenderReaderDirect* reader = new MVNOgreRenderReaderDirect(context);
    if (reader->init() != 0) {
        log_error(reader->tag(), "init failed");
        delete reader;
        return nullptr;
    }
    return reader;
}

Ogre::RenderTarget* MVNOgreRenderReaderDirect::target() { return mContext->getRenderWindow(); }

int MVNOgreRenderReaderDirect::init() {
    log_debug(tag(), "init");
    MVNOgreRenderReader::init();
    mBoxWidth = mWidth;
    mBoxHeight = mHeight;
    mMode = MODE_ASYNC;
    attachHook(mContext->getRenderWindow());
    return 0;
}

MVNByteBuffer* MVNOgreRenderReaderDirect::getRenderImage() {
    const char* t = tag();
    if (mMode != MODE_SYNC) {
        mMode = MODE_SYNC;
        log_info(t, "changed to sync mode");
    }
    Ogre::RenderTarget* win = target();
    if (!win) {
        log_error(t, "getRenderImage failed, renderWin is null");
        return nullptr;
    }
    MVNByteBuffer* buf = MVNByteBufferPool::sAlloc(mWidth * mHeight * mBytesPerPixel);
    if (!buf) {
        log_error(t, "getRenderImage failed, alloc buf error");
        return nullptr;
    }
    try {
        // Read the back buffer before the swap: after a swap its content is
        // undefined, and the front buffer reads as zeros on virtual X servers.
        win->update(false);
        copyTarget(win, buf->ptr());
        win->swapBuffers();
    } catch (const std::exception& e) {
        log_error(t, "getRenderImage failed, %s", e.what());
        MVNByteBufferPool::getSingleton()->release(buf);
        return nullptr;
    }
    return buf;
}

void MVNOgreRenderReaderDirect::copyTarget(Ogre::RenderTarget* rt, unsigned char* dst) {
    Ogre::PixelBox pb(mBoxWidth, mBoxHeight, 1, static_cast<Ogre::PixelFormat>(mPixelFormat), dst);
    rt->copyContentsToMemory(Ogre::Box(0, 0, mBoxWidth, mBoxHeight), pb, Ogre::RenderTarget::FB_BACK);
}

void MVNOgreRenderReaderDirect::copyAfterUpdate(Ogre::RenderTarget* rt, unsigned char* dst) { copyTarget(rt, dst); }

void MVNOgreRenderReaderDirect::finishUpdate(Ogre::RenderTarget* rt) { rt->swapBuffers(); }

}  // namespace Morvane
