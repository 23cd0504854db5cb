#pragma once
// Engine bring-up and tear-down: root, GL render system, windows, RT shader
// generator, resource locations. Everything but the constructor and the
// destructor runs on the render thread, which owns the GL context from
// initApp to closeApp.
#include <map>
#include <memory>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "MVNOgreExport.h"

namespace Ogre {
class Root;
class RenderWindow;
class OverlaySystem;
class FileSystemLayer;
class Camera;
class SceneManager;
class Plugin;
struct FrameEvent;
namespace RTShader {
class ShaderGenerator;
}
}  // namespace Ogre
namespace OgreBites {
struct InputListener;
union Event;
}  // namespace OgreBites
struct SDL_Window;

namespace Morvane {

class MVNByteBuffer;
class MVNFrame;
class MVNFrameListener;

// Input routing uses the engine's own listener and event types.
using InputListener = OgreBites::InputListener;

// A render window and the window-system handle behind it (an SDL window for
// the SDL context, null for the engine-made hidden window).
struct NativeWindowPair {
    Ogre::RenderWindow* render = nullptr;
    SDL_Window* native = nullptr;
};

// Plugins linked into the binary rather than named in plugins.cfg. The module
// loads every plugin from plugins.cfg, so the list stays empty.
class StaticPluginLoader {
public:
    void load();
    void unload();

private:
    std::vector<Ogre::Plugin*> mPlugins;
};

class MVN_OGRE_API MVNOgreContextBase {
public:
    MVNOgreContextBase(const std::string& appName, int width, int height);
    virtual ~MVNOgreContextBase();
    MVNOgreContextBase(const MVNOgreContextBase&) = delete;
    MVNOgreContextBase& operator=(const MVNOgreContextBase&) = delete;

    // Engine frame hooks; they fire only when something drives the root.
    virtual bool frameStarted(const Ogre::FrameEvent& evt);
    virtual bool frameRenderingQueued(const Ogre::FrameEvent& evt);
    virtual bool frameEnded(const Ogre::FrameEvent& evt);

    virtual void windowMoved(Ogre::RenderWindow* rw) {}
    virtual void windowResized(Ogre::RenderWindow* rw) {}
    virtual bool windowClosing(Ogre::RenderWindow* rw) { return true; }
    virtual void windowClosed(Ogre::RenderWindow* rw) {}
    virtual void windowFocusChange(Ogre::RenderWindow* rw) {}

    virtual void setup();
    virtual void createRoot();
    virtual bool oneTimeConfig();
    virtual void setWindowGrab(SDL_Window* window, bool grab) {}
    virtual void locateResources();
    virtual void loadResources();
    virtual void reconfigure(const std::string& renderer, std::map<std::string, std::string>& options);
    virtual void shutdown();
    virtual void pollEvents();
    virtual void addInputListener(SDL_Window* window, InputListener* listener);
    virtual void removeInputListener(SDL_Window* window, InputListener* listener);
    virtual NativeWindowPair createWindow(const char* name, int width, int height,
                                          std::map<std::string, std::string> options);
    virtual void createScene() {}
    virtual void destroyScene() {}
    virtual Ogre::SceneManager* getSceneManager() { return nullptr; }
    virtual Ogre::Camera* getCamera() { return nullptr; }
    // Updates the first window (draw and swap); no engine frame events.
    virtual void renderOneFrame();
    virtual void preGetRenderImage() {}
    virtual MVNByteBuffer* getRenderImage() { return nullptr; }
    virtual MVNFrame* getRenderFrame() { return nullptr; }
    virtual bool supportAsync() { return false; }
    virtual void postGetRenderImage() {}
    virtual void updateRenderImage(int time) {}
    virtual void updateRenderTime(int time) {}
    virtual void registerFrameListener(MVNFrameListener* listener) {}
    virtual void unregisterFrameListener(MVNFrameListener* listener) {}
    virtual MVNByteBuffer* getRenderImageWithGLReadPixels() { return nullptr; }
    // Platform objects of other hosts; nothing to take on the desktop.
    virtual void injectDisplayWindow(void* window) {}
    virtual void injectAAssetManager(void* assetManager) {}
    virtual void injectDisplayView(void* view) {}
    virtual void injectDisplayViewController(void* viewController) {}
    virtual void _preInitApp() {}
    virtual void _destroyWindow(const NativeWindowPair& win);

    // 0 when the engine, its window and its resources are up; -1 with the
    // reason logged. Safe to call again after closeApp.
    int initApp();
    void closeApp();

    Ogre::Root* getRoot() { return mRoot; }
    Ogre::RenderWindow* getRenderWindow();
    // Creating a render texture binds its frame buffer, and destroying one
    // unbinds it, behind the GL render system's back: it still believes the
    // last viewport's target is bound and skips binding it again, so the
    // next draw into that target would land elsewhere. Making the window's
    // viewport the active one puts belief and state back in step. Render
    // thread only; every place that makes, resizes or destroys a render
    // texture calls it afterwards.
    void resyncRenderTarget();
    // The same on the running context, if any.
    static void resyncCurrentRenderTarget();
    const std::vector<NativeWindowPair>& getWindows() const { return mWindows; }
    Ogre::OverlaySystem* getOverlaySystem() { return mOverlaySystem; }
    Ogre::FileSystemLayer& getFSLayer() { return *mFSLayer; }
    // Size asked for at construction; the readers read pictures of this size.
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }
    // Size of the window that the engine actually made.
    int getDisplayWidth();
    int getDisplayHeight();
    // Throw an engine exception when no window exists yet.
    void addInputListener(InputListener* listener);
    void removeInputListener(InputListener* listener);
    void setWindowGrab(bool grab);
    // Throws when no window has that name.
    void destroyWindow(const std::string& name);
    bool initialiseRTShaderSystem();
    void destroyRTShaderSystem();
    void setRTSSWriteShadersToDisk(bool write);
    void enableShaderCache() const;
    void createDummyScene();
    void destroyDummyScene();
    // Highest of 8 and 4 that the render system offers for "FSAA", else 0;
    // asked once and cached.
    int chooseAntiAliasingLevel();
    // The choice itself, from the values the render system offers.
    static int antiAliasingLevelFor(const std::vector<std::string>& possibleValues);
    void _fireInputEvent(const OgreBites::Event& event, unsigned int windowId) const;
    static std::string getDefaultMediaDir();
    // Text of an exception that stays valid after the thrower's library is gone.
    static std::string describe(const std::exception& e);

protected:
    class FrameHooks;
    class TechniqueResolver;

    // The scene every context draws: a scene manager named `scene` with the
    // overlays and the shader generator, a light, and a camera 10000 units
    // out on z whose view makes one world unit on the plane z = 0 one pixel
    // of the window. Render thread.
    void _buildScene(const char* scene, const char* light, const char* camera, Ogre::SceneManager*& sceneManager,
                     Ogre::Camera*& cameraOut);
    // Its reverse, viewports of the render window included; both pointers
    // end null.
    void _destroyScene(Ogre::SceneManager*& sceneManager, Ogre::Camera*& camera);

    Ogre::OverlaySystem* mOverlaySystem = nullptr;
    std::unique_ptr<Ogre::FileSystemLayer> mFSLayer;
    Ogre::Root* mRoot = nullptr;
    StaticPluginLoader mStaticPluginLoader;
    bool mFirstRun = true;
    // Render system to switch to on a later run after reconfigure.
    std::string mNextRenderer;
    std::string mAppName;
    // The first entry is the render window that the readers and scene use.
    std::vector<NativeWindowPair> mWindows;
    std::set<std::pair<unsigned int, InputListener*>> mInputListeners;
    Ogre::RTShader::ShaderGenerator* mShaderGenerator = nullptr;
    TechniqueResolver* mMaterialMgrListener = nullptr;
    int mWidth = 0;
    int mHeight = 0;
    int mAntiAliasingLevel = -1;
    std::unique_ptr<FrameHooks> mFrameHooks;
    // Extra references to the plugin libraries while the root is being
    // built: a root that fails to build unloads its plugins while the
    // exception thrown from one of them is still in flight.
    std::vector<void*> mPluginPins;

private:
    void pinPlugins(const std::string& pluginsFile);
    void unpinPlugins();
};

}  // namespace Morvane
