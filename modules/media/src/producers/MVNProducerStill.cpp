#include "producers/MVNProducerStill.h"

#include <cstring>

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"
#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerStill";
}  // namespace

MVNProducerStill::MVNProducerStill(const MVNProfile& profile) : MVNMediaProducer(profile, "stb_image", kTag) {}

MVNProducerStill::~MVNProducerStill() { MVNFrame::pushBackPool(mPicture); }

void MVNProducerStill::release() {
    MVNMediaProducer::release();
    MVNFrame::pushBackPool(mPicture);
    mPicture = nullptr;
}

int MVNProducerStill::_open(const std::string& path, int& width, int& height, int& positions) {
    MVNFrame* picture = MVNImage::loadFromFile(path, 0, 0);
    if (picture == nullptr) {
        log_error(kTag, "init failed, %s does not decode", path.c_str());
        return -1;
    }
    MVNFrame::pushBackPool(mPicture);
    mPicture = picture;
    width = picture->width();
    height = picture->height();
    positions = 0;  // a still lasts as long as it is asked to
    return 0;
}

int MVNProducerStill::_picture(int position, uint8_t* bgra) {
    if (mPicture == nullptr || mPicture->buffer() == nullptr) return -1;
    std::memcpy(bgra, mPicture->buffer()->ptr(), static_cast<size_t>(mPicture->width()) * mPicture->height() * 4);
    return 0;
}

}  // namespace Morvane
