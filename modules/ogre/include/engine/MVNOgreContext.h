#pragma once
// The context that the manager builds: a hidden render window, the shared
// scene "MorvaneScene" with a camera that maps one world unit on z = 0 to one
// pixel, and the render reader that brings pictures back to memory.
#include "engine/MVNOgreContextBase.h"

namespace Morvane {

class MVNOgreRenderReader;

class MVN_OGRE_API MVNOgreContext : public MVNOgreContextBase {
public:
    MVNOgreContext(const std::string& name, int width, int height);
    ~MVNOgreContext() override;

    void setup() override;
    NativeWindowPair createWindow(const char* name, int width, int height,
                                  std::map<std::string, std::string> options) override;
    void createScene() override;
    void destroyScene() override;
    void shutdown() override;
    Ogre::SceneManager* getSceneManager() override { return mSceneManager; }
    Ogre::Camera* getCamera() override { return mCamera; }

    // Reader forwarding: null, nothing or false without a reader.
    void preGetRenderImage() override;
    MVNByteBuffer* getRenderImage() override;
    MVNFrame* getRenderFrame() override;
    bool supportAsync() override;
    void postGetRenderImage() override;
    void updateRenderImage(int time) override;
    void updateRenderTime(int time) override;
    void registerFrameListener(MVNFrameListener* listener) override;
    void unregisterFrameListener(MVNFrameListener* listener) override;
    // Reads the window's current back buffer, bypassing the reader.
    MVNByteBuffer* getRenderImageWithGLReadPixels() override;
    void _destroyWindow(const NativeWindowPair& win) override;

    MVNOgreRenderReader* getRenderReader() { return mRenderReader; }
    // Replaces the reader by one of `type` (render thread). The old reader
    // and its render texture go first. False, with no reader left, when the
    // new one can't start.
    bool resetRenderReader(int type, bool antiAliasing);

    // True when a window of this size should be full screen on a screen of
    // screenW x screenH: anything not 4:3, or too close to the screen size.
    // The marker file not_full_screen turns it off.
    static bool checkFullScreen(int width, int height, int screenW, int screenH);
    // Reader type that the marker files in the working directory select.
    static int readerTypeFromMarkers();

protected:
    bool _checkFullScreen(int width, int height);

    Ogre::Camera* mCamera = nullptr;
    Ogre::SceneManager* mSceneManager = nullptr;
    MVNOgreRenderReader* mRenderReader = nullptr;
};

}  // namespace Morvane
