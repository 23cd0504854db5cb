#include "readers/MVNOgreRenderReader.h"

#include <GL/glew.h>
#include <Ogre.h>
#include <OgreRTShaderSystem.h>

#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreDepthClear.h"
#include "readers/MVNOgreRenderReaderDirect.h"
#include "readers/MVNOgreRenderReaderGLReadPixels.h"
#include "readers/MVNOgreRenderReaderRTT.h"
#include "readers/MVNOgreRenderReaderRTTSample.h"

namespace Morvane {

static const char* TAG = "Morvane::RenderReader";

MVNOgreRenderReader::MVNOgreRenderReader(MVNOgreContextBase* context)
    : mPixelFormat(Ogre::PF_BYTE_RGBA), mContext(context) {}

MVNOgreRenderReader::~MVNOgreRenderReader() = default;

int MVNOgreRenderReader::init() {
    log_debug(TAG, "init");
    mWidth = mContext->getWidth();
    mHeight = mContext->getHeight();
    return 0;
}

std::shared_ptr<Ogre::Texture> MVNOgreRenderReader::createReadTexture(const char* tag, int& fsaa) {
    fsaa = mAntiAliasing ? mContext->chooseAntiAliasingLevel() : 0;
    log_debug(tag, "fsaa:%d", fsaa);
    return Ogre::TextureManager::getSingleton().createManual(
        "RttTex", Ogre::RGN_DEFAULT, Ogre::TEX_TYPE_2D, mWidth, mHeight, 0,
        static_cast<Ogre::PixelFormat>(mPixelFormat), Ogre::TU_RENDERTARGET, nullptr, mGammaCorrection, fsaa);
}

void MVNOgreRenderReader::addReadViewport(Ogre::RenderTarget* target, Ogre::Camera* camera) {
    Ogre::Viewport* vp = target->addViewport(camera, 0, 0, 0, 1, 1);
    vp->setAutoUpdated(true);
    vp->setClearEveryFrame(true, Ogre::FBT_COLOUR | Ogre::FBT_DEPTH);
    vp->setBackgroundColour(Ogre::ColourValue(0, 0, 0, 1));
    // Cover bars and labels are overlays: they belong in the read frame.
    vp->setOverlaysEnabled(true);
    vp->setMaterialScheme(Ogre::RTShader::ShaderGenerator::DEFAULT_SCHEME_NAME);
    MVNOgreDepthClear::watch(target);
}

bool MVNOgreRenderReader::initGlew() {
    // Our GLEW is private to the module; its entry points are loaded for the
    // GL context that is current on the render thread.
    glewExperimental = GL_TRUE;
    GLenum err = glewInit();
    // GLEW 2.2 reports a missing EGL/GLX display this way even when the GL
    // entry points were found; what the readers need is checked by name.
    return err == GLEW_OK || (err == GLEW_ERROR_NO_GLX_DISPLAY && glBindFramebuffer != nullptr);
}

MVNOgreRenderReaderType MVNOgreRenderReader::chooseRenderReaderTypeAuto() {
    if (!initGlew()) {
        log_warn(TAG, "Failed to initialize GLEW");
        return MVN_READER_RTT;
    }
    if (!glTexImage2DMultisample) {
        log_warn(TAG, "glTexImage2DMultisample is null");
        return MVN_READER_RTT;
    }
    return MVN_READER_RTT_SAMPLE;
}

MVNOgreRenderReader* MVNOgreRenderReader::create(MVNOgreContextBase* context, MVNOgreRenderReaderType type,
                                                 bool antiAliasing) {
    if (type == MVN_READER_AUTO) type = chooseRenderReaderTypeAuto();
    switch (type) {
        case MVN_READER_RTT_SAMPLE: {
            MVNOgreRenderReader* reader = MVNOgreRenderReaderRTTSample::create(context, antiAliasing);
            if (reader) return reader;
            log_error(TAG, "OgreRenderReaderRTTSample create failed, auto changed to OgreRenderReaderRTT");
            return MVNOgreRenderReaderRTT::create(context, antiAliasing);
        }
        case MVN_READER_DIRECT:
            return MVNOgreRenderReaderDirect::create(context);
        case MVN_READER_GL:
            return MVNOgreRenderReaderGLReadPixels::create(context);
        case MVN_READER_RTT:
        default:
            return MVNOgreRenderReaderRTT::create(context, antiAliasing);
    }
}

}  // namespace Morvane
