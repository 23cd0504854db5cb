#pragma once
// A clip that plays one picture: B,G,R,A frames from memory of the
// picture's size, 100 frames long, with or without a quad of its own in the
// shared scene (the quad needs the module installed in the host's
// repository).
#include "FilterMediaHarness.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "services/MVNProducer.h"
#include "timeline/MVNRepository.h"

extern "C" int MVNOgre_module_install(Morvane::MVNRepository* repository);

namespace MorvaneTest {

class PictureClip : public Morvane::MVNProducer {
public:
    PictureClip(const Image& picture, bool ownQuad)
        : MVNProducer(Morvane::MVNProfile(picture.width, picture.height, 25)), mPicture(picture) {
        block();
        setInt32("render.width", picture.width);
        setInt32("render.height", picture.height);
        setString("service", "test.picture");
        unblock();
        setInAndOut(0, 99);
        if (ownQuad) _createTextureNode("", true);
    }
    ~PictureClip() override {
        detachAll();
        _destroyTextureNode();
    }
    int _getImage(int position, Morvane::MVNFrame** frame) override {
        int size = mPicture.width * mPicture.height * 4;
        Morvane::MVNFrame* f = Morvane::MVNFrame::pullFromPool(1, size);
        if (f == nullptr) return -1;
        uint8_t* p = f->buffer()->ptr();
        for (size_t i = 0; i < mPicture.rgba.size(); i += 4) {
            p[i] = mPicture.rgba[i + 2];
            p[i + 1] = mPicture.rgba[i + 1];
            p[i + 2] = mPicture.rgba[i];
            p[i + 3] = mPicture.rgba[i + 3];
        }
        f->setColorFormat(Morvane::MVN_COLOR_BGRA);
        f->setWidth(mPicture.width);
        f->setHeight(mPicture.height);
        f->setSize(size);
        *frame = f;
        return 0;
    }

private:
    Image mPicture;
};

// Installs the module's factories once per process.
inline void installModule() {
    Morvane::MVNRepository* repository = Morvane::MVNRepository::getSingleton();
    if (!repository->hasRenderTexture("ogreRenderTexture")) MVNOgre_module_install(repository);
}

// The picture the running w x h engine composes now; empty when there is none.
inline Image composedImage(int w, int h) {
    Image out{w, h, {}};
    Morvane::MVNByteBuffer* image = Morvane::MVNOgreManager::getSingleton()->getRenderImage();
    if (image == nullptr) return out;
    out.rgba.assign(image->ptr(), image->ptr() + w * h * 4);
    Morvane::MVNByteBufferPool::sRelease(image);
    return out;
}

// The picture in the w x h render texture `name`; empty when there is none.
inline Image renderTextureImage(const std::string& name, int w, int h) {
    Image out{w, h, std::vector<uint8_t>(static_cast<size_t>(w) * h * 4)};
    onRenderThread([&]() {
        Ogre::TexturePtr rtt = Ogre::TextureManager::getSingleton().getByName(name, Ogre::RGN_DEFAULT);
        if (!rtt) {
            out.rgba.clear();
            return;
        }
        Ogre::PixelBox box(w, h, 1, Ogre::PF_BYTE_RGBA, out.rgba.data());
        rtt->getBuffer()->blitToMemory(box);
    });
    return out;
}

// One engine of W x H for all the tests of a suite, the module installed,
// the window kept off full screen and the background magenta.
template <int W, int H>
class SharedEngineTest : public ::testing::Test {
protected:
    static void SetUpTestSuite() {
        touchMarker("not_full_screen");
        installModule();
        sRun = new EngineRun(W, H);
    }
    static void TearDownTestSuite() {
        delete sRun;
        sRun = nullptr;
        removeMarker("not_full_screen");
    }
    void SetUp() override {
        ASSERT_EQ(sRun->rc, 0);
        TestScene::setBackground(kMagenta);
    }
    static Image composed() { return composedImage(W, H); }
    static Image renderTexture(const std::string& name) { return renderTextureImage(name, W, H); }

    static inline EngineRun* sRun = nullptr;
};

}  // namespace MorvaneTest
