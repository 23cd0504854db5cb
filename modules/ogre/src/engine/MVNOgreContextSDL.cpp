#include "engine/MVNOgreContextSDL.h"

#include <Bites/OgreInput.h>
#include <Ogre.h>
#include <OgreOverlaySystem.h>
#include <OgreRTShaderSystem.h>
#include <SDL.h>
#include <SDL_syswm.h>

#include <cmath>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreDepthClear.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNOgreContextSDL";

// SDL's events in the engine's input terms; false for events no listener takes.
static bool convertEvent(const SDL_Event& in, OgreBites::Event& out) {
    out.type = 0;
    switch (in.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP:
            out.type = in.type == SDL_KEYDOWN ? OgreBites::KEYDOWN : OgreBites::KEYUP;
            out.key.repeat = in.key.repeat;
            out.key.keysym.sym = in.key.keysym.sym;
            out.key.keysym.mod = in.key.keysym.mod;
            return true;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP:
            out.type = in.type == SDL_MOUSEBUTTONDOWN ? OgreBites::MOUSEBUTTONDOWN : OgreBites::MOUSEBUTTONUP;
            out.button.x = in.button.x;
            out.button.y = in.button.y;
            out.button.button = in.button.button;
            out.button.clicks = in.button.clicks;
            return true;
        case SDL_MOUSEWHEEL:
            out.type = OgreBites::MOUSEWHEEL;
            out.wheel.y = in.wheel.y;
            return true;
        case SDL_MOUSEMOTION:
            out.type = OgreBites::MOUSEMOTION;
            out.motion.x = in.motion.x;
            out.motion.y = in.motion.y;
            out.motion.xrel = in.motion.xrel;
            out.motion.yrel = in.motion.yrel;
            out.motion.windowID = in.motion.windowID;
            return true;
        case SDL_FINGERDOWN:
        case SDL_FINGERUP:
        case SDL_FINGERMOTION:
            out.type = in.type == SDL_FINGERDOWN ? OgreBites::FINGERDOWN
                       : in.type == SDL_FINGERUP ? OgreBites::FINGERUP
                                                 : OgreBites::FINGERMOTION;
            out.tfinger.x = in.tfinger.x;
            out.tfinger.y = in.tfinger.y;
            out.tfinger.dx = in.tfinger.dx;
            out.tfinger.dy = in.tfinger.dy;
            out.tfinger.fingerId = static_cast<int>(in.tfinger.fingerId);
            return true;
        case SDL_TEXTINPUT:
            out.type = OgreBites::TEXTINPUT;
            out.text.chars = in.text.text;
            return true;
        default:
            return false;
    }
}

static unsigned int eventWindowId(const SDL_Event& e) {
    switch (e.type) {
        case SDL_KEYDOWN:
        case SDL_KEYUP: return e.key.windowID;
        case SDL_MOUSEBUTTONDOWN:
        case SDL_MOUSEBUTTONUP: return e.button.windowID;
        case SDL_MOUSEWHEEL: return e.wheel.windowID;
        case SDL_MOUSEMOTION: return e.motion.windowID;
        case SDL_TEXTINPUT: return e.text.windowID;
        default: return 0;
    }
}

MVNOgreContextSDL::MVNOgreContextSDL(const std::string& name, int width, int height, bool sharedScene)
    : MVNOgreContextBase(name, width, height), mSharedScene(sharedScene) {}

MVNOgreContextSDL::~MVNOgreContextSDL() = default;

void MVNOgreContextSDL::setup() {
    MVNOgreContextBase::setup();
    createScene();
}

NativeWindowPair MVNOgreContextSDL::createWindow(const char* name, int width, int height,
                                                 std::map<std::string, std::string> options) {
    NativeWindowPair pair;
    if (!SDL_WasInit(SDL_INIT_VIDEO) && SDL_InitSubSystem(SDL_INIT_VIDEO) != 0) {
        OGRE_EXCEPT(Ogre::Exception::ERR_RENDERINGAPI_ERROR, std::string("SDL video: ") + SDL_GetError(),
                    "Morvane::MVNOgreContextSDL::createWindow");
    }
    Ogre::RenderWindowDescription desc = mRoot->getRenderSystem()->getRenderWindowDescription();
    int fsaa = chooseAntiAliasingLevel();
    if (fsaa != 0) options["FSAA"] = Ogre::StringConverter::toString(fsaa);
    for (const auto& kv : desc.miscParams) options.insert(kv);
    if (width > 0 && height > 0) {
        desc.width = width;
        desc.height = height;
    }
    int monitor = 1;
    auto it = options.find("monitorIndex");
    if (it != options.end()) monitor = Ogre::StringConverter::parseInt(it->second, 1);
    int position = SDL_WINDOWPOS_UNDEFINED_DISPLAY(monitor - 1);
    Uint32 flags = desc.useFullScreen ? SDL_WINDOW_FULLSCREEN : SDL_WINDOW_RESIZABLE;
    pair.native = SDL_CreateWindow(name, position, position, desc.width, desc.height, flags);
    if (!pair.native) {
        OGRE_EXCEPT(Ogre::Exception::ERR_RENDERINGAPI_ERROR, std::string("SDL_CreateWindow: ") + SDL_GetError(),
                    "Morvane::MVNOgreContextSDL::createWindow");
    }
    SDL_SysWMinfo wmInfo;
    SDL_VERSION(&wmInfo.version);
    SDL_GetWindowWMInfo(pair.native, &wmInfo);
    // The engine draws into a child window of its own inside the SDL window:
    // given the SDL window itself, this engine version keeps no handle of
    // it and can never learn that it was resized.
    options["parentWindowHandle"] = Ogre::StringConverter::toString(size_t(wmInfo.info.x11.window));
    if (!mWindows.empty()) options["currentGLContext"] = "true";
    desc.miscParams.clear();
    desc.miscParams.insert(options.begin(), options.end());
    desc.name = name;
    pair.render = mRoot->createRenderWindow(desc);
    mWindows.push_back(pair);
    return pair;
}

void MVNOgreContextSDL::createScene() {
    if (mSharedScene) {
        _buildScene("MorvaneScene", "MorvaneLight", "MorvaneCamera", mSceneManager, mCamera);
    } else {
        _buildScene("SDLScene", "SDLMainLight", "SDLCamera", mSceneManager, mCamera);
    }
    if (Ogre::RenderWindow* win = getRenderWindow()) {
        Ogre::Viewport* vp = win->addViewport(mCamera, 0, 0, 0, 1, 1);
        vp->setMaterialScheme(Ogre::RTShader::ShaderGenerator::DEFAULT_SCHEME_NAME);
        MVNOgreDepthClear::watch(win);
    }
}

void MVNOgreContextSDL::destroyScene() { _destroyScene(mSceneManager, mCamera); }

void MVNOgreContextSDL::shutdown() {
    destroyScene();
    std::vector<SDL_Window*> natives;
    for (const NativeWindowPair& w : mWindows) natives.push_back(w.native);
    MVNOgreContextBase::shutdown();
    // The engine's windows are gone; the SDL windows they drew into go next.
    for (SDL_Window* w : natives) {
        if (w) SDL_DestroyWindow(w);
    }
    if (SDL_WasInit(SDL_INIT_VIDEO)) SDL_QuitSubSystem(SDL_INIT_VIDEO);
}

void MVNOgreContextSDL::pollEvents() {
    if (mWindows.empty()) return;
    SDL_Event event;
    while (SDL_PollEvent(&event)) {
        if (event.type == SDL_QUIT) {
            mQuitRequested = true;
            mRoot->queueEndRendering(true);
        } else if (event.type == SDL_WINDOWEVENT) {
            if (event.window.event != SDL_WINDOWEVENT_RESIZED) continue;
            for (const NativeWindowPair& w : mWindows) {
                if (event.window.windowID != SDL_GetWindowID(w.native)) continue;
                // The engine's child window follows the SDL window.
                w.render->resize(static_cast<unsigned int>(event.window.data1),
                                 static_cast<unsigned int>(event.window.data2));
                w.render->windowMovedOrResized();
                windowResized(w.render);
            }
        } else {
            OgreBites::Event converted;
            if (convertEvent(event, converted)) _fireInputEvent(converted, eventWindowId(event));
        }
    }
}

void MVNOgreContextSDL::setWindowGrab(SDL_Window* window, bool grab) {
    SDL_SetWindowGrab(window, grab ? SDL_TRUE : SDL_FALSE);
    SDL_SetRelativeMouseMode(grab ? SDL_TRUE : SDL_FALSE);
}

void MVNOgreContextSDL::addInputListener(SDL_Window* window, InputListener* listener) {
    mInputListeners.insert(std::make_pair(SDL_GetWindowID(window), listener));
}

void MVNOgreContextSDL::removeInputListener(SDL_Window* window, InputListener* listener) {
    mInputListeners.erase(std::make_pair(SDL_GetWindowID(window), listener));
}

MVNByteBuffer* MVNOgreContextSDL::getRenderImageWithGLReadPixels() {
    Ogre::RenderWindow* win = getRenderWindow();
    if (!win) {
        log_error(TAG, "renderWin is null");
        return nullptr;
    }
    MVNByteBuffer* buf = MVNByteBufferPool::sAlloc(static_cast<int>(win->getWidth() * win->getHeight() * 4));
    if (!buf) {
        log_error(TAG, "getRenderImageWithGLReadPixels faield, alloc buf error");
        return nullptr;
    }
    Ogre::PixelBox pb(win->getWidth(), win->getHeight(), 1, Ogre::PF_BYTE_RGBA, buf->ptr());
    win->copyContentsToMemory(Ogre::Box(0, 0, win->getWidth(), win->getHeight()), pb, Ogre::RenderTarget::FB_BACK);
    return buf;
}

MVNByteBuffer* MVNOgreContextSDL::getRenderImage() {
    Ogre::RenderWindow* win = getRenderWindow();
    if (!win) {
        log_error(TAG, "renderWin is null");
        return nullptr;
    }
    pollEvents();
    // Drawn into the back buffer, read from there, then shown: the picture
    // read is the one on screen.
    win->update(false);
    MVNByteBuffer* image = nullptr;
    if (static_cast<int>(win->getWidth()) == mWidth && static_cast<int>(win->getHeight()) == mHeight) {
        image = getRenderImageWithGLReadPixels();
    } else {
        log_error(TAG, "getRenderImage failed, window is %ux%u, not %dx%d", win->getWidth(), win->getHeight(), mWidth,
                  mHeight);
    }
    win->swapBuffers();
    return image;
}

}  // namespace Morvane
