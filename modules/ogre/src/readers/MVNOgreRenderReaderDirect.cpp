#include "readers/MVNOgreRenderReaderDirect.h"

#include <Ogre.h>

#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"

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

void MVNOgreRenderReaderDirect::drawAndCopy(Ogre::RenderTarget* target, unsigned char* dst) {
    // Read the back buffer before the swap: after a swap its content is
    // undefined, and the front buffer reads as zeros on virtual X servers.
    target->update(false);
    copyTarget(target, dst);
    target->swapBuffers();
}

void MVNOgreRenderReaderDirect::copyTarget(Ogre::RenderTarget* rt, unsigned char* dst) {
    Ogre::PixelBox pb(mBoxWidth, mBoxHeight, 1, static_cast<Ogre::PixelFormat>(mPixelFormat), dst);
    rt->copyContentsToMemory(Ogre::Box(0, 0, mBoxWidth, mBoxHeight), pb, Ogre::RenderTarget::FB_BACK);
}

void MVNOgreRenderReaderDirect::copyAfterUpdate(Ogre::RenderTarget* rt, unsigned char* dst) { copyTarget(rt, dst); }

void MVNOgreRenderReaderDirect::finishUpdate(Ogre::RenderTarget* rt) { rt->swapBuffers(); }

}  // namespace Morvane
