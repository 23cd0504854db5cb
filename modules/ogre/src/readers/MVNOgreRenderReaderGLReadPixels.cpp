#include "readers/MVNOgreRenderReaderGLReadPixels.h"

#include <GL/glew.h>
#include <OgrePixelFormat.h>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNLog.h"

namespace Morvane {

static const char* TAG = "Morvane::RenderReaderGLReadPixels";

MVNOgreRenderReaderGLReadPixels::MVNOgreRenderReaderGLReadPixels(MVNOgreContextBase* context)
    : MVNOgreRenderReader(context), mGlFormat(GL_RGBA) {}

MVNOgreRenderReaderGLReadPixels::~MVNOgreRenderReaderGLReadPixels() = default;

MVNOgreRenderReaderGLReadPixels* MVNOgreRenderReaderGLReadPixels::create(MVNOgreContextBase* context) {
    MVNOgreRenderReaderGLReadPixels* reader = new MVNOgreRenderReaderGLReadPixels(context);
    if (reader->init() != 0) {
        log_error(TAG, "init failed");
        delete reader;
        return nullptr;
    }
    return reader;
}

int MVNOgreRenderReaderGLReadPixels::init() {
    MVNOgreRenderReader::init();
    if (!initGlew()) {
        log_error(TAG, "Failed to initialize GLEW");
        return -1;
    }
    mBoxWidth = mWidth;
    mBoxHeight = mHeight;
    return 0;
}

MVNByteBuffer* MVNOgreRenderReaderGLReadPixels::getRenderImage() {
    MVNByteBuffer* buf = MVNByteBufferPool::sAlloc(mWidth * mHeight * mBytesPerPixel);
    if (!buf) {
        log_error(TAG, "getRenderImage failed, alloc buf error");
        return nullptr;
    }
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, mWidth, mHeight, mGlFormat, GL_UNSIGNED_BYTE, buf->ptr());
    // GL rows run bottom up; the picture goes out top row first.
    Ogre::PixelBox pb(mBoxWidth, mBoxHeight, 1, static_cast<Ogre::PixelFormat>(mPixelFormat), buf->ptr());
    Ogre::PixelUtil::bulkPixelVerticalFlip(pb);
    return buf;
}

}  // namespace Morvane
