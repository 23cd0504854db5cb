#include "producers/MVNOgreQuadProducer.h"

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "timeline/MVNManager.h"
#include "core/MVNPixelUtils.h"

namespace Morvane {

MVNOgreQuadProducer::MVNOgreQuadProducer(const MVNProfile& profile, int zOrder, const char* service, const char* tag)
    : MVNProducer(profile), mTag(tag) {
    block();
    setProfile(profile);
    setInt32("zOrder", zOrder);
    setString("service", service);
    setInt32("flags", 1);
    setBoolean("_active", true);
    unblock();
    genStringId("producer");
}

MVNOgreQuadProducer::~MVNOgreQuadProducer() { log_debug(mTag, "%s destroy", getStringId().c_str()); }

MVNOgreQuadProducer* MVNOgreQuadProducer::_setUp(MVNOgreQuadProducer* producer, int length, int width, int height,
                                                 const std::function<void()>& more) {
    if (producer == nullptr) return nullptr;
    producer->block();
    producer->setIn(0);
    producer->setLength(length);
    producer->setOut(length - 1);
    producer->setInt32("width", width);
    producer->setInt32("render.width", width);
    producer->setInt32("height", height);
    producer->setInt32("render.height", height);
    if (more) more();
    producer->unblock();
    if (producer->init() != 0) {
        log_error(producer->mTag, "create failed");
        delete producer;
        return nullptr;
    }
    return producer;
}

int MVNOgreQuadProducer::_buildQuad(const std::string& name) {
    _createTextureNode(name, true);
    _createAudioConverter();
    return renderTexture() != nullptr ? 0 : -1;
}

int MVNOgreQuadProducer::init() { return _buildQuad(""); }

void MVNOgreQuadProducer::release() {
    _destroyAudioConverter();
    _destroyTextureNode();
}

int MVNOgreQuadProducer::seek(int position, int whence) {
    mLastPosition = position;
    return MVNProducer::seek(position, whence);
}

void MVNOgreQuadProducer::onClipEnd() {
    MVNProducer::onClipEnd();
    MVNMode mode = MVNManager::getSingleton()->getMode();
    if (mode == MVN_MODE_RENDER || mode == MVN_MODE_RENDER_PREVIEW) release();
}

void MVNOgreQuadProducer::setActive(bool active, bool force, int position, int flags) {
    setBoolean("_active", active);
}

int MVNOgreQuadProducer::_getImage(int position, MVNFrame** frame) {
    int width = getInt32("width", 0);
    int height = getInt32("height", 0);
    int size = getPixelsBufferSize(width, height, MVN_COLOR_BGRA);
    MVNFrame* f = MVNFrame::pullFromPool(1, size);
    if (f == nullptr) {
        log_error(mTag, "_getImage failed, pull frame error");
        return -1;
    }
    mLastPosition = position;
    MVNByteBuffer* buffer = f->buffer();
    if (buffer != nullptr && buffer->ptr() != nullptr) _paint(buffer->ptr(), width, height, position);
    f->setColorFormat(MVN_COLOR_BGRA);
    f->setWidth(width);
    f->setHeight(height);
    f->setSize(size);
    *frame = f;
    return 0;
}

}  // namespace Morvane
