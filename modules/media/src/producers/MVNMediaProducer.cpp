#include "producers/MVNMediaProducer.h"

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "core/MVNPixelUtils.h"
#include "timeline/MVNRepository.h"

namespace Morvane {

namespace {
const char* const kRenderTextureFactory = "ogreRenderTexture";
}  // namespace

MVNMediaProducer::MVNMediaProducer(const MVNProfile& profile, const char* service, const char* tag)
    : MVNProducer(profile), mTag(tag) {
    block();
    setString("service", service);
    setBoolean("_active", true);
    unblock();
    genStringId("producer");
}

MVNMediaProducer::~MVNMediaProducer() { log_debug(mTag, "%s destroy", getStringId().c_str()); }

int MVNMediaProducer::init() {
    std::string path = getString("resource", "");
    if (path.empty()) {
        log_error(mTag, "init failed, no resource");
        return -1;
    }
    int width = 0;
    int height = 0;
    int positions = 0;
    if (_open(path, width, height, positions) != 0) return -1;
    block();
    setInt32("width", width);
    setInt32("height", height);
    setInt32("render.width", width);
    setInt32("render.height", height);
    if (positions > 0) {
        // The whole file; a project or a grid trims it afterwards.
        setLength(positions);
        setOut(positions - 1);
    }
    unblock();
    // The pictures reach the GPU through the renderer's texture of uploaded
    // pixels, where there is a renderer.
    if (MVNRepository::getSingleton()->hasRenderTexture(kRenderTextureFactory)) {
        _createTextureNode("", true);
        if (renderTexture() == nullptr) return -1;
    }
    return 0;
}

void MVNMediaProducer::release() { _destroyTextureNode(); }

double MVNMediaProducer::_seconds(int position) const {
    int num = mProfile.fpsNum() > 0 ? mProfile.fpsNum() : 25;
    int den = mProfile.fpsDen() > 0 ? mProfile.fpsDen() : 1;
    return static_cast<double>(position) * den / num;
}

int MVNMediaProducer::_getImage(int position, MVNFrame** frame) {
    int width = getInt32("width", 0);
    int height = getInt32("height", 0);
    int size = getPixelsBufferSize(width, height, MVN_COLOR_BGRA);
    MVNFrame* f = size > 0 ? MVNFrame::pullFromPool(1, size) : nullptr;
    if (f == nullptr || f->buffer() == nullptr || f->buffer()->ptr() == nullptr) {
        log_error(mTag, "%s _getImage failed, no frame of %dx%d", getStringId().c_str(), width, height);
        MVNFrame::pushBackPool(f);
        return -1;
    }
    int rc = 0;
    {
        std::lock_guard<std::mutex> guard(mPictureLock);
        rc = _picture(position, f->buffer()->ptr());
    }
    if (rc != 0) {
        MVNFrame::pushBackPool(f);
        return -1;
    }
    f->setColorFormat(MVN_COLOR_BGRA);
    f->setWidth(width);
    f->setHeight(height);
    f->setSize(size);
    f->setFrames(position);
    *frame = f;
    return 0;
}

}  // namespace Morvane
