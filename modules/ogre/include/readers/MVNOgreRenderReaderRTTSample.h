#pragma once
// Draws into the render texture "RttTex" and reads its frame buffer object
// through a pixel buffer object with plain GL. Sync only. Rows come bottom
// first (GL order), bytes R,G,B,A.
#include <memory>

#include "readers/MVNOgreRenderReader.h"

namespace Ogre {
class RenderTarget;
class Texture;
}  // namespace Ogre

namespace Morvane {

class MVN_OGRE_API MVNOgreRenderReaderRTTSample : public MVNOgreRenderReader {
public:
    explicit MVNOgreRenderReaderRTTSample(MVNOgreContextBase* context);
    ~MVNOgreRenderReaderRTTSample() override;

    static MVNOgreRenderReaderRTTSample* create(MVNOgreContextBase* context, bool antiAliasing);

    int init() override;
    void release() override;
    // Saves the frame buffer binding that postGetRenderImage restores.
    void preGetRenderImage() override;
    // Leaves the pixel buffer mapped; postGetRenderImage unmaps it.
    MVNByteBuffer* getRenderImage() override;
    void postGetRenderImage() override;
    MVNFrame* getRenderFrame() override { return nullptr; }
    bool supportAsync() override { return false; }
    void updateRenderImage(int time) override {}
    void updateRenderTime(int time) override {}
    void registerFrameListener(MVNFrameListener* listener) override {}
    void unregisterFrameListener(MVNFrameListener* listener) override {}
    MVNOgreRenderReaderType type() const override { return MVN_READER_RTT_SAMPLE; }

    int getFSAA() const { return mFSAA; }

private:
    void bindFramebuffer(unsigned int fbo);

    Ogre::RenderTarget* mRenderTarget = nullptr;
    std::shared_ptr<Ogre::Texture> mTexture;
    unsigned int mGlFormat;
    unsigned int mFbo = 0;
    unsigned int mPbo = 0;
    int mPreviousFbo = 0;
    // The frame buffer that glReadPixels reads: the resolved one when the
    // target is multisampled.
    unsigned int mReadFbo = 0;
    bool mMapped = false;
    int mFSAA = 0;
};

}  // namespace Morvane
