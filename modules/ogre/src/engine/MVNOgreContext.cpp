#include "engine/MVNOgreContext.h"

#include <Ogre.h>
#include <OgreOverlaySystem.h>
#include <OgreRTShaderSystem.h>
#include <sys/stat.h>

#include <cfloat>
#include <cmath>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreDepthClear.h"
#include "engine/MVNOgreManager.h"
#include "readers/MVNOgreRenderReader.h"
#include "engine/WindowEventUtilities.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNOgreContext";

// Behaviour switches are marker files in the working folder: only their
// existence counts.
static bool markerExists(const char* name) {
    struct stat st;
    return ::stat(name, &st) == 0;
}

MVNOgreContext::MVNOgreContext(const std::string& name, int width, int height)
    : MVNOgreContextBase(name, width, height) {}

MVNOgreContext::~MVNOgreContext() = default;

int MVNOgreContext::readerTypeFromMarkers() {
    return MVNOgreRenderReader::typeFromMarkers(MVN_READER_RTT);
}

void MVNOgreContext::setup() {
    log_debug(TAG, "setup...");
    MVNOgreContextBase::setup();
    createScene();
    log_info(TAG, "64bit use rtt read");
    // A marker file beats the render system's "reader" property.
    int type = MVNOgreRenderReader::typeFromMarkers(MVNOgreManager::getSingleton()->readerType());
    mRenderReader = MVNOgreRenderReader::create(this, static_cast<MVNOgreRenderReaderType>(type), true);
    log_debug(TAG, "setup done");
}

NativeWindowPair MVNOgreContext::createWindow(const char* name, int width, int height,
                                              std::map<std::string, std::string> options) {
    Ogre::RenderWindowDescription desc = mRoot->getRenderSystem()->getRenderWindowDescription();
    for (const auto& kv : desc.miscParams) options.insert(kv);
    options["hidden"] = markerExists("show_render_window") ? "false" : "true";
    int fsaa = chooseAntiAliasingLevel();
    if (fsaa != 0) options["FSAA"] = Ogre::StringConverter::toString(fsaa);
    desc.miscParams.clear();
    desc.miscParams.insert(options.begin(), options.end());
    desc.name = name;
    if (width > 0 && height > 0) {
        desc.width = width;
        desc.height = height;
    }
    desc.useFullScreen = _checkFullScreen(width, height);
    NativeWindowPair pair;
    pair.render = mRoot->createRenderWindow(desc);
    mWindows.push_back(pair);
    return pair;
}

bool MVNOgreContext::_checkFullScreen(int width, int height) {
    if (markerExists("not_full_screen")) return false;
    int screenW = 0;
    int screenH = 0;
    if (!WindowEventUtilities::getScreenSize(screenW, screenH)) {
        // The window can't be made without a display either; the engine
        // reports that when it tries.
        return false;
    }
    return checkFullScreen(width, height, screenW, screenH);
}

bool MVNOgreContext::checkFullScreen(int width, int height, int screenW, int screenH) {
    if (markerExists("not_full_screen")) return false;
    if (height <= 0 || screenH <= 0) return false;
    float aspect = static_cast<float>(width) / static_cast<float>(height);
    if (!(std::fabs(aspect - 1.3333333333333333) < FLT_EPSILON)) return true;
    if (screenW <= width + static_cast<int>(static_cast<float>(screenW) / screenH * 144)) return true;
    return screenH <= height + 144;
}

bool MVNOgreContext::resetRenderReader(int type, bool antiAliasing) {
    if (mRenderReader) {
        mRenderReader->release();
        delete mRenderReader;
        mRenderReader = nullptr;
    }
    // The readers' texture has a fixed name: the next reader makes it anew.
    Ogre::TextureManager& tm = Ogre::TextureManager::getSingleton();
    for (const char* name : {"RttTex", "RttTexPlain"}) {
        if (tm.resourceExists(name, Ogre::RGN_DEFAULT)) tm.remove(name, Ogre::RGN_DEFAULT);
    }
    mRenderReader = MVNOgreRenderReader::create(this, static_cast<MVNOgreRenderReaderType>(type), antiAliasing);
    return mRenderReader != nullptr;
}

void MVNOgreContext::createScene() {
    log_debug(TAG, "createScene");
    Ogre::RenderWindow* win = getRenderWindow();
    if (win) win->removeAllViewports();
    _buildScene("MorvaneScene", "MorvaneLight", "MorvaneCamera", mSceneManager, mCamera);

    if (win) {
        Ogre::Viewport* vp = win->addViewport(mCamera, 0, 0, 0, 1, 1);
        vp->setAutoUpdated(true);
        vp->setClearEveryFrame(true, Ogre::FBT_COLOUR | Ogre::FBT_DEPTH);
        vp->setMaterialScheme(Ogre::RTShader::ShaderGenerator::DEFAULT_SCHEME_NAME);
        MVNOgreDepthClear::watch(win);
    }
    log_debug(TAG, "createScene done ");
}

void MVNOgreContext::destroyScene() { _destroyScene(mSceneManager, mCamera); }

void MVNOgreContext::shutdown() {
    if (mRenderReader) {
        mRenderReader->release();
        delete mRenderReader;
        mRenderReader = nullptr;
    }
    destroyScene();
    MVNOgreContextBase::shutdown();
}

void MVNOgreContext::preGetRenderImage() {
    if (mRenderReader) mRenderReader->preGetRenderImage();
}

MVNByteBuffer* MVNOgreContext::getRenderImage() {
    return mRenderReader ? mRenderReader->getRenderImage() : nullptr;
}

MVNFrame* MVNOgreContext::getRenderFrame() { return mRenderReader ? mRenderReader->getRenderFrame() : nullptr; }

bool MVNOgreContext::supportAsync() { return mRenderReader ? mRenderReader->supportAsync() : false; }

void MVNOgreContext::postGetRenderImage() {
    if (mRenderReader) mRenderReader->postGetRenderImage();
}

void MVNOgreContext::updateRenderImage(int time) {
    if (mRenderReader) mRenderReader->updateRenderImage(time);
}

void MVNOgreContext::updateRenderTime(int time) {
    if (mRenderReader) mRenderReader->updateRenderTime(time);
}

void MVNOgreContext::registerFrameListener(MVNFrameListener* listener) {
    if (mRenderReader) mRenderReader->registerFrameListener(listener);
}

void MVNOgreContext::unregisterFrameListener(MVNFrameListener* listener) {
    if (mRenderReader) mRenderReader->unregisterFrameListener(listener);
}

MVNByteBuffer* MVNOgreContext::getRenderImageWithGLReadPixels() {
    Ogre::RenderWindow* win = getRenderWindow();
    if (!win) {
        log_error(TAG, "renderWin is null");
        return nullptr;
    }
    MVNByteBuffer* buf = MVNByteBufferPool::sAlloc(static_cast<int>(win->getWidth() * win->getHeight() * 4));
    if (!buf) {
        log_error(TAG, "getRenderImageWithGLReadPixels failed, alloc buf error");
        return nullptr;
    }
    Ogre::PixelBox pb(win->getWidth(), win->getHeight(), 1, Ogre::PF_BYTE_RGBA, buf->ptr());
    // The back buffer holds the last drawn picture; the front buffer of a
    // window can't be read on every display (virtual X servers give zeros).
    win->copyContentsToMemory(Ogre::Box(0, 0, win->getWidth(), win->getHeight()), pb,
                              Ogre::RenderTarget::FB_BACK);
    return buf;
}

void MVNOgreContext::_destroyWindow(const NativeWindowPair& win) { MVNOgreContextBase::_destroyWindow(win); }

}  // namespace Morvane
