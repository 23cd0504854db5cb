#pragma once
// A clip that plays one picture: B,G,R,A frames from memory of the
// picture's size, 100 frames long, with or without a quad of its own in the
// shared scene (the quad needs the module installed in the host's
// repository).
#include "FilterMediaHarness.h"
#include "core/MVNByteBuffer.h"
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

}  // namespace MorvaneTest
