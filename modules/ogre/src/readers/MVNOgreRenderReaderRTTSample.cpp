#include "readers/MVNOgreRenderReaderRTTSample.h"

#include <GL/glew.h>
#include <Ogre.h>
#include <OgreDepthBuffer.h>

#include <cstring>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"

namespace Morvane {

static const char* TAG = "Morvane::RenderReaderRTTSample";

MVNOgreRenderReaderRTTSample::MVNOgreRenderReaderRTTSample(MVNOgreContextBase* context)
    : MVNOgreRenderReader(context), mGlFormat(GL_RGBA) {}

MVNOgreRenderReaderRTTSample::~MVNOgreRenderReaderRTTSample() = default;

MVNOgreRenderReaderRTTSample* MVNOgreRenderReaderRTTSample::create(MVNOgreContextBase* context,
                                                                   bool antiAliasing) {
    MVNOgreRenderReaderRTTSample* reader = new MVNOgreRenderReaderRTTSample(context);
    reader->setAntiAliasing(antiAliasing);
    if (reader->init() != 0) {
        log_error(TAG, "init failed");
        delete reader;
        return nullptr;
    }
    return reader;
}

int MVNOgreRenderReaderRTTSample::init() {
    if (!initGlew()) {
        log_error(TAG, "Failed to initialize GLEW");
        return -1;
    }
    if (!glTexImage2DMultisample) {
        log_error(TAG, "not support glTexImage2DMultisample");
        return -1;
    }
    log_debug(TAG, "gammaCorrection:%d antiAliasing:%d", mGammaCorrection, mAntiAliasing);
    MVNOgreRenderReader::init();
    try {
        Ogre::Camera* camera = mContext->getCamera();
        Ogre::TexturePtr texture = createReadTexture(TAG, mFSAA);
        Ogre::RenderTarget* target = texture->getBuffer(0, 0)->getRenderTarget();
        // The single-sampled frame buffer that a multisampled target resolves
        // into when it swaps; that is the one to read.
        GLuint fbo = 0;
        target->getCustomAttribute("GL_FBOID", &fbo);
        log_debug(TAG, "getCustomAttribute FBO:%u", fbo);
        mFbo = fbo;
        target->setDepthBufferPool(Ogre::DepthBuffer::POOL_DEFAULT);
        addReadViewport(target, camera);
        mRenderTarget = target;
        mTexture = texture;
    } catch (const std::exception& e) {
        log_error(TAG, "init error %s", e.what());
        return -1;
    }
    glGenBuffers(1, &mPbo);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, mPbo);
    glBufferData(GL_PIXEL_PACK_BUFFER, mWidth * mHeight * mBytesPerPixel, nullptr, GL_DYNAMIC_READ);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    log_debug(TAG, "width:%d height:%d bytesPerPixel%d ", mWidth, mHeight, mBytesPerPixel);
    return 0;
}

void MVNOgreRenderReaderRTTSample::release() {
    if (mPbo) glDeleteBuffers(1, &mPbo);
    mPbo = 0;
    mTexture.reset();
    mRenderTarget = nullptr;
    MVNOgreRenderReader::release();
}

void MVNOgreRenderReaderRTTSample::bindFramebuffer(unsigned int fbo) {
    glBindFramebuffer(GL_FRAMEBUFFER, fbo);
    if (glGetError() == GL_INVALID_OPERATION) glBindFramebufferEXT(GL_FRAMEBUFFER, fbo);
}

void MVNOgreRenderReaderRTTSample::preGetRenderImage() {
    GLint previous = 0;
    glGetIntegerv(GL_FRAMEBUFFER_BINDING, &previous);
    mPreviousFbo = previous;
}

MVNByteBuffer* MVNOgreRenderReaderRTTSample::getRenderImage() {
    if (!mRenderTarget) return nullptr;
    try {
        // With multisampling the swap resolves into the frame buffer we read.
        mRenderTarget->update(true);
    } catch (const std::exception& e) {
        log_error(TAG, "getRenderImage failed, %s", e.what());
        return nullptr;
    }
    // The engine caches which frame buffer it left bound by the update just
    // made; that binding, not the one from before the update, is what
    // postGetRenderImage must put back, or the next update draws elsewhere.
    preGetRenderImage();
    bindFramebuffer(mFbo);
    glReadBuffer(GL_COLOR_ATTACHMENT0);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, mPbo);
    glPixelStorei(GL_PACK_ALIGNMENT, 4);
    glReadPixels(0, 0, mWidth, mHeight, mGlFormat, GL_UNSIGNED_BYTE, nullptr);
    glBindBuffer(GL_PIXEL_PACK_BUFFER, mPbo);
    const void* mapped = glMapBuffer(GL_PIXEL_PACK_BUFFER, GL_READ_ONLY);
    mMapped = true;
    int size = mWidth * mHeight * mBytesPerPixel;
    MVNByteBuffer* buf = MVNByteBufferPool::sAlloc(size);
    if (!buf) {
        log_error(TAG, "getRenderImage failed, alloc buf error");
        return nullptr;
    }
    if (!mapped) {
        log_error(TAG, "getRenderImage failed, map pixel buffer error");
        MVNByteBufferPool::getSingleton()->release(buf);
        return nullptr;
    }
    std::memcpy(buf->ptr(), mapped, size);
    return buf;
}

void MVNOgreRenderReaderRTTSample::postGetRenderImage() {
    if (mMapped) {
        glBindBuffer(GL_PIXEL_PACK_BUFFER, mPbo);
        glUnmapBuffer(GL_PIXEL_PACK_BUFFER);
        mMapped = false;
    }
    glBindBuffer(GL_PIXEL_PACK_BUFFER, 0);
    bindFramebuffer(static_cast<unsigned int>(mPreviousFbo));
}

}  // namespace Morvane
