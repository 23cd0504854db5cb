#include "MVNProducerImage.h"

#include <new>

#include "MVNFrame.h"
#include "MVNLog.h"
#include "MVNManager.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerImage";
}

MVNProducerImage* MVNProducerImage::create(const MVNProfile& profile, const char* resource, int zOrder) {
    MVNProducerImage* producer = new (std::nothrow) MVNProducerImage(profile, resource, zOrder);
    if (producer == nullptr) return nullptr;
    int length = static_cast<int>(profile.fps() * 10.0);
    producer->block();
    producer->setIn(0);
    producer->setInt32("width", profile.width());
    producer->setInt32("render.width", profile.width());
    producer->setInt32("height", profile.height());
    producer->setInt32("render.height", profile.height());
    producer->setLength(length);
    producer->setOut(length - 1);
    producer->unblock();
    if (producer->init() != 0) {
        log_error(kTag, "create failed");
        delete producer;
        return nullptr;
    }
    return producer;
}

MVNProducerImage::MVNProducerImage(const MVNProfile& profile, const char* resource, int zOrder)
    : MVNProducer(profile) {
    block();
    setProfile(profile);
    setInt32("zOrder", zOrder);
    setString("resource", resource ? resource : "");
    setString("service", "ogre.image");
    setInt32("flags", 1);
    setBoolean("_active", true);
    unblock();
    genStringId("producer");
}

MVNProducerImage::~MVNProducerImage() { log_debug(kTag, "%s destroy", getStringId().c_str()); }

int MVNProducerImage::init() {
    log_debug(kTag, "init...");
    _createTextureNode();
    _createAudioConverter();
    log_debug(kTag, "init done");
    // Without a quad the producer would show nothing at all.
    return renderTexture() != nullptr ? 0 : -1;
}

void MVNProducerImage::release() {
    _destroyTextureNode();
    _destroyAudioConverter();
}

void MVNProducerImage::resetRender(int position) { MVNProducer::resetRender(position); }

int MVNProducerImage::seek(int position, int whence) {
    this->position = position;
    return MVNProducer::seek(position, whence);
}

void MVNProducerImage::onClipEnd() {
    MVNProducer::onClipEnd();
    // When rendering, a clip doesn't come back: its quad can go. In the
    // editing modes it stays for the clip to be played again.
    MVNMode mode = MVNManager::getSingleton()->getMode();
    if (mode == MVN_MODE_RENDER || mode == MVN_MODE_RENDER_PREVIEW) release();
}

void MVNProducerImage::setActive(bool active, bool force, int position, int flags) { setBoolean("_active", active); }

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

void MVNProducerImage::_destroyTextureNode() { MVNProducer::_destroyTextureNode(); }

void MVNProducerImage::_createTextureNode() {
    // Through the registered render-texture factory: it checks the size and
    // builds the quad in the producer's group scene, under the producer's
    // lock, and puts geometry, animation and rotation on it.
    MVNProducer::_createTextureNode(getString("resource", ""), true);
}

}  // namespace Morvane
