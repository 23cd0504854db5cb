#include "producers/MVNProducerImage.h"

#include <new>

#include "core/MVNFrame.h"
#include "core/MVNLog.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerImage";
}

MVNProducerImage* MVNProducerImage::create(const MVNProfile& profile, const char* resource, int zOrder) {
    MVNProducerImage* producer = new (std::nothrow) MVNProducerImage(profile, resource, zOrder);
    return static_cast<MVNProducerImage*>(
        _setUp(producer, static_cast<int>(profile.fps() * 10.0), profile.width(), profile.height()));
}

MVNProducerImage::MVNProducerImage(const MVNProfile& profile, const char* resource, int zOrder)
    : MVNOgreQuadProducer(profile, zOrder, "ogre.image", kTag) {
    block();
    setString("resource", resource ? resource : "");
    unblock();
}

int MVNProducerImage::init() {
    log_debug(kTag, "init...");
    int result = _buildQuad(getString("resource", ""));
    log_debug(kTag, "init done");
    // Without a quad the producer would show nothing at all.
    return result;
}

void MVNProducerImage::release() {
    _destroyTextureNode();
    _destroyAudioConverter();
}

int MVNProducerImage::_getImage(int position, MVNFrame** frame) {
    seek(position, 0);
    MVNFrame* f = MVNFrame::pullFromPool(1);
    if (f == nullptr) {
        log_error(kTag, "_getImage failed, pull frame error");
        return -1;
    }
    // Blank: the quad draws the picture when the scene is drawn.
    f->setColorFormat(MVN_COLOR_BLANK);
    f->setWidth(0);
    f->setHeight(0);
    *frame = f;
    return 0;
}

MVNProducer* MVNProducerImage::_alloc() {
    return new MVNProducerImage(mProfile, getString("resource", "").c_str(), getInt32("zOrder", 0));
}

void MVNProducerImage::_createTextureNode() {
    // Through the registered render-texture factory: it checks the size and
    // builds the quad in the producer's group scene, under the producer's
    // lock, and puts geometry, animation and rotation on it.
    MVNProducer::_createTextureNode(getString("resource", ""), true);
}

}  // namespace Morvane
