#pragma once
#include "producers/MVNMediaProducer.h"

namespace Morvane {

class MVNFrame;

// "stb_image": a still picture decoded on the processor through MVNImage
// (PNG, JPEG, BMP, WebP, anything FFmpeg reads), once, and shown for as
// long as the clip lasts.
class MVNProducerStill : public MVNMediaProducer {
public:
    explicit MVNProducerStill(const MVNProfile& profile);
    ~MVNProducerStill() override;

    void release() override;
    // One picture: it goes up to the GPU once.
    uint64_t _pictureKey(int position) override { return mPicture != nullptr ? 1 : 0; }
    MVNProducer* _alloc() override { return new MVNProducerStill(mProfile); }

protected:
    int _open(const std::string& path, int& width, int& height, int& positions) override;
    int _picture(int position, uint8_t* bgra) override;

private:
    MVNFrame* mPicture = nullptr;  // pooled, B,G,R,A
};

}  // namespace Morvane
