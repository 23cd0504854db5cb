#pragma once
#include <deque>
#include <functional>

#include "MVNOgreExport.h"
#include "core/MVNProfile.h"
#include "core/MVNRect.h"
#include "readers/MVNOgreRenderReaderType.h"

namespace OgreBites {
struct InputListener;
}

namespace Morvane {

using InputListener = OgreBites::InputListener;

class MVNByteBuffer;
class MVNFrame;
class MVNFrameListener;
class MVNOgreContextBase;
class MVNOgreCoverLayer;
class MVNOgreRenderQueue;
class MVNOgreRenderable;
class MVNOgreSceneManager;
template <typename T>
class MVNPool;

// The one owner of the engine in the process: the profile in force, the
// engine context, the render queue with its thread, the pool of renderables
// and the letterbox cover layer. Every piece of code that touches the engine
// gets there through callRenderable or callRenderableWait, which carry the
// work to the render thread. The object lives from library load to process
// end; init and release start and stop the engine inside that lifetime.
class MVN_OGRE_API MVNOgreManager {
public:
    static MVNOgreManager* getSingleton();

    // Starts the render thread, then brings the engine up on it with a
    // hidden window of renderWinWidth x renderWinHeight (0 for either side:
    // the profile's size; both sides must be even). 0 on success, -1 on
    // failure; after a failure release() is the way out.
    int init(const MVNProfile& profile, int renderWinWidth, int renderWinHeight);
    // The engine-less mode, for hosts that only need the render thread:
    // takes the profile and starts the pool and the queue, without a
    // context. init() does the same as its first step; release() ends both.
    int startQueueOnly(const MVNProfile& profile);
    // Shuts the engine down on the render thread, runs what is still queued,
    // stops the thread and frees everything but the injected asset manager.
    void release();

    MVNProfile& getProfile() { return mProfile; }
    MVNOgreContextBase* getOgreContext() { return mContext; }
    bool isUseTextureFiltering() const { return mUseTextureFiltering; }
    // Takes a new profile; once running, the cover layer follows it.
    void setProfile(const MVNProfile& profile);
    // Platform objects handed over by the host by name ("window",
    // "assetManager", "view", "viewController"); stored only. 0 or -1.
    int injectObject(const char* name, void* object);
    // A folder whose files the engine finds by name in the "General" group
    // (pictures of a project, say). Kept across release and added again by
    // the next init; added at once while running.
    void addResourceLocation(const std::string& folder);
    // Multisampling of the window, the readers and the render textures: on
    // by default (the highest level of 4 and 8 the driver offers). Off trades
    // smooth edges of rotated or scaled quads for speed; software renderers
    // draw about twice as fast without it. Takes effect at the next init.
    void setAntiAliasing(bool enabled) { mAntiAliasing = enabled; }
    bool isAntiAliasing() const { return mAntiAliasing; }
    // The read-back strategy where no marker file chooses one (the render
    // system's "reader" property). Takes effect at the next init.
    void setReaderType(MVNOgreRenderReaderType type) { mReaderType = type; }
    MVNOgreRenderReaderType readerType() const { return mReaderType; }
    // An on-screen SDL window (MVNOgreContextSDL) instead of the hidden one,
    // for previews: it shows every picture drawn, and its user may resize
    // it (the camera and the cover bars follow, keeping the profile's
    // aspect). Takes effect at the next init.
    void setOnScreenWindow(bool enabled) { mOnScreenWindow = enabled; }
    bool isOnScreenWindow() const { return mOnScreenWindow; }

    // Queues `call` for the render thread under `name` and returns at once.
    // Dropped without a word while no queue is running.
    void callRenderable(std::function<void()> call, const char* name);
    // Queues `call` and blocks until it has run, or until about ten seconds
    // have gone by while it was still queued ("<name> run too long time").
    // `call` must not post to the queue itself.
    void callRenderableWait(std::function<void()> call, const char* name);
    // Where the queue puts a finished renderable: back to the pool, or
    // deleted when it isn't pooled or the pool is gone.
    void recycleRenderable(MVNOgreRenderable* renderable);
    // Puts a scene manager's destruction off until release. Not locked: call
    // it on the render thread, or while release can't be running.
    void delayDestroySceneManager(MVNOgreSceneManager* sceneManager);

    // Draws the hidden window once.
    void renderOneFrame();
    // The composed picture, read back on the render thread; the caller owns
    // it and gives it back to MVNByteBufferPool. Null when the reader gave
    // nothing or the wait timed out.
    MVNByteBuffer* getRenderImage();
    // The newest frame of an asynchronous reader, on the calling thread.
    MVNFrame* getRenderFrame();
    // Asks an asynchronous reader for the picture of `time`, without waiting.
    void updateRenderImage(int time);
    void registerFrameListener(MVNFrameListener* listener);
    void unregisterFrameListener(MVNFrameListener* listener);
    void addInputListener(InputListener* listener);
    void removeInputListener(InputListener* listener);
    // True while the render thread has work queued or running; false before
    // init and after release.
    bool isBusy();

    // Between profile pixels, render-window pixels and world units; the
    // argument unchanged without a context.
    MVNRect adjustGeometryProfileToWorld(const MVNRect& rect);
    MVNPoint adjustPointScreenToProfile(const MVNPoint& point);
    MVNRect adjustGeometryProfileToScreen(const MVNRect& rect);
    MVNRect adjustGeometryScreenToProfile(const MVNRect& rect);
    // The context's size; 0 without a context.
    int getRenderWindowWidth();
    int getRenderWindowHeight();
    // Of the context's camera; 0 with "camera is null" without one.
    float getCameraNearClipDistance();
    float getCameraFarClipDistance();
    float getCameraDistance();

protected:
    MVNOgreManager();
    ~MVNOgreManager();
    MVNOgreManager(const MVNOgreManager&) = delete;
    MVNOgreManager& operator=(const MVNOgreManager&) = delete;

    // closeApp, delete and forget the context, all on the calling thread.
    void _destroyOgreContext();
    // Render thread: draws the hidden window.
    void _renderOneFrame();
    // Builds and initialises the cover layer; `warning` is logged on failure.
    void _createCoverLayer(const char* warning);
    void _addResourceLocationNow(const std::string& folder);
    // Host thread, before a picture is drawn: when the user has resized the
    // on-screen window, the camera is widened so that the layout still fits
    // whole ("fitWindow"), and the cover bars cover the rest.
    void _followWindowSize();
    // Hands `renderable` to the queue, from the pool or newly built.
    MVNOgreRenderable* _takeRenderable(std::function<void()>& call, const char* name, bool forWait);

    static MVNOgreManager* mInstance;

    MVNProfile mProfile;                         // the profile in force
    MVNOgreContextBase* mContext = nullptr;      // owned; null before init and after release
    MVNOgreRenderQueue* mRenderQueue = nullptr;  // owned; the render thread lives inside
    MVNPool<MVNOgreRenderable>* mRenderablePool = nullptr;  // owned; finished renderables for reuse
    std::function<void()> mRenderOneFrameCall;   // bound once by init, reused by every renderOneFrame
    MVNByteBuffer* mRenderImage = nullptr;       // the last result of getRenderImage
    bool mInited = false;                        // init succeeded and release hasn't run
    void* mWindow = nullptr;                     // injected "window"
    void* mAssetManager = nullptr;               // injected "assetManager"; survives release
    void* mView = nullptr;                       // injected "view"
    void* mViewController = nullptr;             // injected "viewController"; set once
    MVNOgreCoverLayer* mCoverLayer = nullptr;    // owned; only when window and profile differ in size
    bool mUseTextureFiltering = true;            // read through isUseTextureFiltering
    std::deque<MVNOgreSceneManager*> mSceneManagersToDestroy;
    std::vector<std::string> mResourceLocations;  // see addResourceLocation
    MVNOgreRenderReaderType mReaderType = MVN_READER_RTT;  // see setReaderType
    bool mAntiAliasing = true;                     // see setAntiAliasing
    bool mOnScreenWindow = false;                  // see setOnScreenWindow
    int mShownWidth = 0;                           // the on-screen window's size at the last picture
    int mShownHeight = 0;  // destroyed by release, on the render thread
};

}  // namespace Morvane
