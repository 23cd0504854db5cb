#pragma once
// Reads whatever frame buffer is bound with glReadPixels, flipped right way
// up. No render step: the caller renders first (renderOneFrame). Sync only.
#include "readers/MVNOgreRenderReader.h"

namespace Morvane {

class MVN_OGRE_API MVNOgreRenderReaderGLReadPixels : public MVNOgreRenderReader {
public:
    explicit MVNOgreRenderReaderGLReadPixels(MVNOgreContextBase* context);
    ~MVNOgreRenderReaderGLReadPixels() override;

    static MVNOgreRenderReaderGLReadPixels* create(MVNOgreContextBase* context);

    int init() override;
    void preGetRenderImage() override {}
    void postGetRenderImage() override {}
    MVNByteBuffer* getRenderImage() override;
    MVNFrame* getRenderFrame() override { return nullptr; }
    bool supportAsync() override { return false; }
    void updateRenderImage(int time) override {}
    void updateRenderTime(int time) override {}
    void registerFrameListener(MVNFrameListener* listener) override {}
    void unregisterFrameListener(MVNFrameListener* listener) override {}
    MVNOgreRenderReaderType type() const override { return MVN_READER_GL; }

private:
    unsigned int mGlFormat;
    int mBoxWidth = 1;
    int mBoxHeight = 1;
};

}  // namespace Morvane
