#include "readers/MVNOgreRenderReader.h"

#include <GL/glew.h>
#include <Ogre.h>
#include <OgreRTShaderSystem.h>
#include <sys/stat.h>

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

namespace {

MVNOgreRenderReader* createRTTSample(MVNOgreContextBase* context, bool antiAliasing) {
    MVNOgreRenderReader* reader = MVNOgreRenderReaderRTTSample::create(context, antiAliasing);
    if (reader) return reader;
    log_error(TAG, "OgreRenderReaderRTTSample create failed, auto changed to OgreRenderReaderRTT");
    return MVNOgreRenderReaderRTT::create(context, antiAliasing);
}

// One row per read-back strategy: the name a render system's "reader"
// property gives it, the marker file that chooses it, its type and how it is
// built. Where several marker files exist, the later row wins. Adding a
// reader is its class, its type and one row.
struct ReaderRow {
    const char* name;
    const char* marker;
    MVNOgreRenderReaderType type;
    MVNOgreRenderReader* (*construct)(MVNOgreContextBase* context, bool antiAliasing);
};

const ReaderRow kReaders[] = {
    {"direct", "read_use_direct", MVN_READER_DIRECT,
     [](MVNOgreContextBase* context, bool) -> MVNOgreRenderReader* { return MVNOgreRenderReaderDirect::create(context); }},
    {"rtt", "read_use_rtt", MVN_READER_RTT,
     [](MVNOgreContextBase* context, bool antiAliasing) -> MVNOgreRenderReader* {
         return MVNOgreRenderReaderRTT::create(context, antiAliasing);
     }},
    {"rtt_sample", "read_use_rtt_sample", MVN_READER_RTT_SAMPLE, createRTTSample},
    {"gl", "read_use_gl", MVN_READER_GL,
     [](MVNOgreContextBase* context, bool) -> MVNOgreRenderReader* {
         return MVNOgreRenderReaderGLReadPixels::create(context);
     }},
};

// Marker files count by their existence alone.
bool markerExists(const char* name) {
    struct stat st;
    return ::stat(name, &st) == 0;
}

}  // namespace

bool MVNOgreRenderReader::typeFromName(const std::string& name, MVNOgreRenderReaderType& type) {
    for (const ReaderRow& row : kReaders) {
        if (name == row.name) {
            type = row.type;
            return true;
        }
    }
    return false;
}

MVNOgreRenderReaderType MVNOgreRenderReader::typeFromMarkers(MVNOgreRenderReaderType fallback) {
    MVNOgreRenderReaderType type = fallback;
    for (const ReaderRow& row : kReaders) {
        if (markerExists(row.marker)) type = row.type;
    }
    return type;
}

MVNOgreRenderReader* MVNOgreRenderReader::create(MVNOgreContextBase* context, MVNOgreRenderReaderType type,
                                                 bool antiAliasing) {
    if (type == MVN_READER_AUTO) type = chooseRenderReaderTypeAuto();
    for (const ReaderRow& row : kReaders) {
        if (row.type == type) return row.construct(context, antiAliasing);
    }
    return MVNOgreRenderReaderRTT::create(context, antiAliasing);
}

}  // namespace Morvane
