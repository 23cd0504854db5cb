#pragma once
// On-screen sibling of MVNOgreContext: an SDL window with the same scene
// shape, no reader, and SDL events routed to the input listeners. The module
// doesn't build it; a host that wants a preview window can.
#include "engine/MVNOgreContextBase.h"

namespace Morvane {

class MVN_OGRE_API MVNOgreContextSDL : public MVNOgreContextBase {
public:
    MVNOgreContextSDL(const std::string& name, int width, int height);
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

    using MVNOgreContextBase::addInputListener;
    using MVNOgreContextBase::removeInputListener;
    using MVNOgreContextBase::setWindowGrab;

protected:
    Ogre::SceneManager* mSceneManager = nullptr;
    Ogre::Camera* mCamera = nullptr;
};

}  // namespace Morvane
