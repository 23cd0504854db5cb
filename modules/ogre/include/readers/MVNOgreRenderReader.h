#pragma once
// Brings the composed picture from the GPU into memory. Sync mode: the
// caller gets a pooled byte buffer from getRenderImage. Async mode: times go
// in by updateRenderTime, renders are triggered by updateRenderImage, and
// frames come out to a listener or to getRenderFrame.
// All operations run on the render thread, except updateRenderTime and
// getRenderFrame, which come from host threads.
#include <memory>
#include <string>

#include "MVNOgreExport.h"
#include "readers/MVNOgreRenderReaderType.h"

namespace Ogre {
class Camera;
class RenderTarget;
class Texture;
}  // namespace Ogre

namespace Morvane {

class MVNByteBuffer;
class MVNFrame;
class MVNFrameListener;
class MVNOgreContextBase;

class MVN_OGRE_API MVNOgreRenderReader {
public:
    explicit MVNOgreRenderReader(MVNOgreContextBase* context);
    virtual ~MVNOgreRenderReader();
    MVNOgreRenderReader(const MVNOgreRenderReader&) = delete;
    MVNOgreRenderReader& operator=(const MVNOgreRenderReader&) = delete;

    virtual int init();
    virtual void release() {}
    virtual void preGetRenderImage() = 0;
    virtual void postGetRenderImage() = 0;
    // A buffer of width * height * 4 bytes that the caller releases to
    // MVNByteBufferPool; null on failure (logged).
    virtual MVNByteBuffer* getRenderImage() = 0;
    virtual MVNFrame* getRenderFrame() = 0;
    virtual bool supportAsync() = 0;
    virtual void updateRenderImage(int time) = 0;
    virtual void updateRenderTime(int time) = 0;
    virtual void registerFrameListener(MVNFrameListener* listener) = 0;
    virtual void unregisterFrameListener(MVNFrameListener* listener) = 0;
    virtual MVNOgreRenderReaderType type() const = 0;

    void setGammaCorrection(bool on) { mGammaCorrection = on; }
    void setAntiAliasing(bool on) { mAntiAliasing = on; }
    int getWidth() const { return mWidth; }
    int getHeight() const { return mHeight; }

    // Builds and initialises a reader; null when it can't start (logged).
    // Type 2 falls back to RTT; unknown types build RTT.
    static MVNOgreRenderReader* create(MVNOgreContextBase* context, MVNOgreRenderReaderType type,
                                       bool antiAliasing);
    // The strategy a render system's "reader" property names ("rtt",
    // "rtt_sample", "direct", "gl"); false for any other name.
    static bool typeFromName(const std::string& name, MVNOgreRenderReaderType& type);
    // The strategy of the marker files in the working folder (read_use_rtt,
    // read_use_rtt_sample, read_use_direct, read_use_gl), the later of the
    // table winning where several exist; without any, `fallback`.
    static MVNOgreRenderReaderType typeFromMarkers(MVNOgreRenderReaderType fallback);
    // RTT sample where GL has multisample textures, otherwise RTT. Needs a
    // current GL context.
    static MVNOgreRenderReaderType chooseRenderReaderTypeAuto();
    // Loads the GL entry points of our GLEW for the current context;
    // false when that fails.
    static bool initGlew();

protected:
    // The render texture "RttTex" of the reader's size and pixel format,
    // multisampled at the level chosen for `fsaa` (logged under `tag`) when
    // anti-aliasing is on. Throws what the engine throws.
    std::shared_ptr<Ogre::Texture> createReadTexture(const char* tag, int& fsaa);
    // Lets `camera` draw the whole scene into `target`, cleared to opaque
    // black every frame.
    static void addReadViewport(Ogre::RenderTarget* target, Ogre::Camera* camera);

    int mWidth = 0;
    int mHeight = 0;
    int mBytesPerPixel = 4;
    // Byte order R,G,B,A in memory: the readers' frames carry colour type 26.
    int mPixelFormat;
    bool mGammaCorrection = false;
    bool mAntiAliasing = true;
    MVNOgreContextBase* mContext;
};

}  // namespace Morvane
