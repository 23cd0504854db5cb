#pragma once
// On-screen sibling of MVNOgreContext: an SDL window with the same scene
// shape, no reader, and SDL events routed to the input listeners. A host can
// build one of its own, or ask the render system for it (the property
// "window" "sdl"): the manager then builds it in place of the hidden context,
// with the shared scene that the services draw into.
#include "engine/MVNOgreContextBase.h"

namespace Morvane {

class MVN_OGRE_API MVNOgreContextSDL : public MVNOgreContextBase {
public:
    // `sharedScene`: the scene, light and camera take the names of the
    // hidden context's ("MorvaneScene"...), so that services find them.
    MVNOgreContextSDL(const std::string& name, int width, int height, bool sharedScene = false);
    ~MVNOgreContextSDL() override;

    void setup() override;
    NativeWindowPair createWindow(const char* name, int width, int height,
                                  std::map<std::string, std::string> options) override;
    void createScene() override;
    void destroyScene() override;
    void shutdown() override;
    void pollEvents() override;
    void setWindowGrab(SDL_Window* window, bool grab) override;
    void addInputListener(SDL_Window* window, InputListener* listener) override;
    void removeInputListener(SDL_Window* window, InputListener* listener) override;
    Ogre::SceneManager* getSceneManager() override { return mSceneManager; }
    Ogre::Camera* getCamera() override { return mCamera; }
    MVNByteBuffer* getRenderImageWithGLReadPixels() override;
    // What the window shows next: the scene is drawn, read back (R,G,B,A,
    // rows top first, the size asked for at construction) and then shown.
    // Null, logged, while the window has another size.
    MVNByteBuffer* getRenderImage() override;
    // True once the window was closed (the SDL quit event).
    bool isQuitRequested() const { return mQuitRequested; }

    using MVNOgreContextBase::addInputListener;
    using MVNOgreContextBase::removeInputListener;
    using MVNOgreContextBase::setWindowGrab;

protected:
    Ogre::SceneManager* mSceneManager = nullptr;
    Ogre::Camera* mCamera = nullptr;
    bool mSharedScene = false;
    bool mQuitRequested = false;
};

}  // namespace Morvane
