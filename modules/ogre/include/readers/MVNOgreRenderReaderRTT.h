#pragma once
// Default reader: the camera draws into the render texture "RttTex", which is
// copied to memory. Starts in async mode; the first getRenderImage switches it
// to sync for good. Only one can exist per engine (the texture name is fixed).
#include <atomic>
#include <deque>
#include <memory>
#include <string>
#include <vector>

#include "core/MVNDoubleFrame.h"
#include "readers/MVNOgreRenderReader.h"
#include "core/Mutex11.h"

namespace Ogre {
class RenderTarget;
class Texture;
}  // namespace Ogre

namespace Morvane {

class MVN_OGRE_API MVNOgreRenderReaderRTT : public MVNOgreRenderReader {
public:
    enum Mode { MODE_UNSET = 0, MODE_SYNC = 1, MODE_ASYNC = 2 };

    explicit MVNOgreRenderReaderRTT(MVNOgreContextBase* context);
    ~MVNOgreRenderReaderRTT() override;

    static MVNOgreRenderReaderRTT* create(MVNOgreContextBase* context, bool antiAliasing);

    int init() override;
    void release() override;
    void preGetRenderImage() override {}
    void postGetRenderImage() override {}
    MVNByteBuffer* getRenderImage() override;
    MVNFrame* getRenderFrame() override;
    bool supportAsync() override { return true; }
    void updateRenderImage(int time) override;
    void updateRenderTime(int time) override;
    void registerFrameListener(MVNFrameListener* listener) override;
    void unregisterFrameListener(MVNFrameListener* listener) override;
    MVNOgreRenderReaderType type() const override { return MVN_READER_RTT; }

    int getMode() const { return mMode; }
    // Level of multisampling the target was made with.
    int getFSAA() const { return mFSAA; }
    // Whether the last frame drawn was multisampled. With the automatic
    // choice the reader keeps a single-sampled twin of its target and draws
    // a frame there whenever multisampling would change no pixel of it.
    bool lastFrameMultisampled() const { return mLastMultisampled; }

    // The engine's hook at the end of a target update: in async mode the
    // picture is copied into a pooled frame here.
    void postRenderTargetUpdate();

protected:
    class TargetHook;

    // Log tag of the concrete reader.
    virtual const char* tag() const;
    // The target to draw and read; the texture's for RTT, the window for
    // direct. Null when there is none.
    virtual Ogre::RenderTarget* target() { return mCurrentTarget ? mCurrentTarget : mRenderTarget; }
    // Picks the target of the coming frame (see lastFrameMultisampled).
    void chooseTarget();
    void attachHook(Ogre::RenderTarget* target);
    void detachHook();
    // Copies the target's picture into `dst` (width * height * 4 bytes).
    virtual void copyTarget(Ogre::RenderTarget* target, unsigned char* dst);
    // The sync read: draws the target and copies its picture into `dst`.
    virtual void drawAndCopy(Ogre::RenderTarget* target, unsigned char* dst);
    // The async copy, inside the engine's hook at the end of an update.
    virtual void copyAfterUpdate(Ogre::RenderTarget* target, unsigned char* dst);
    // After the async update has been copied: shows the picture where the
    // target is a window.
    virtual void finishUpdate(Ogre::RenderTarget* target) {}

    Ogre::RenderTarget* mRenderTarget = nullptr;
    std::shared_ptr<Ogre::Texture> mTexture;
    MVNDoubleFrame mDoubleFrame;
    std::deque<int> mRenderTimes;
    Mutex11 mTimesLock;
    // Area that is read: the whole picture once init has run.
    int mBoxWidth = 1;
    int mBoxHeight = 1;
    // Set on the render thread, read by the host's threads too.
    std::atomic<int> mMode{MODE_UNSET};
    // Guards mFrameListener and is held over each delivery to it, so that
    // once unregisterFrameListener returns no call reaches the listener: the
    // consumer that registered may be gone right after.
    Mutex11 mListenerLock;
    MVNFrameListener* mFrameListener = nullptr;
    int mFSAA = 0;
    std::unique_ptr<TargetHook> mHook;
    std::vector<Ogre::RenderTarget*> mHookedTargets;
    // The single-sampled twin of mRenderTarget, only with the automatic
    // choice, and the one the current frame is drawn into.
    std::shared_ptr<Ogre::Texture> mPlainTexture;
    Ogre::RenderTarget* mPlainTarget = nullptr;
    Ogre::RenderTarget* mCurrentTarget = nullptr;
    bool mLastMultisampled = false;
    // Async pictures lost in a row for want of a frame; render thread only.
    int mLostPictures = 0;
};

}  // namespace Morvane
