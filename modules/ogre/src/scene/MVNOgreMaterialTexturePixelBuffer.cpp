#include "scene/MVNOgreMaterialTexturePixelBuffer.h"

#include <Ogre.h>

#include <algorithm>
#include <cstring>
#include <new>

#include "core/MVNByteBuffer.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "core/MVNPixelUtils.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNOgreMaterialTexturePixelBuffer";

int antiAliasingLevel() {
    MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
    return context ? context->chooseAntiAliasingLevel() : 0;
}
}  // namespace

MVNOgreMaterialTexturePixelBuffer::MVNOgreMaterialTexturePixelBuffer(int width, int height)
    : width(width), height(height) {
    textureName = MVNGeneratorStringId::getSingleton()->genStringId("PixelBufferTexture");
    // B, G, R, A bytes as the frames of the working CPU format hold them;
    // dynamic and write-only with discarding locks, so that an upload never
    // reads back or waits for a frame in flight.
    Ogre::TexturePtr texture = Ogre::TextureManager::getSingleton().createManual(
        textureName, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME, Ogre::TEX_TYPE_2D, width, height, 1, 0,
        Ogre::PF_BYTE_BGRA, Ogre::TU_DYNAMIC_WRITE_ONLY, nullptr, false, antiAliasingLevel(), "");
    realWidth = static_cast<int>(texture->getWidth());
    realHeight = static_cast<int>(texture->getHeight());
    pixelBuffer = texture->getBuffer(0, 0);
}

MVNOgreMaterialTexturePixelBuffer::~MVNOgreMaterialTexturePixelBuffer() {
    Ogre::TextureManager* manager = Ogre::TextureManager::getSingletonPtr();
    if (manager && manager->resourceExists(textureName, Ogre::RGN_DEFAULT)) {
        manager->remove(textureName, Ogre::RGN_DEFAULT);
    }
    delete scaleBuffer;
    scaleBuffer = nullptr;
    pixelBuffer.reset();
}

void MVNOgreMaterialTexturePixelBuffer::updateTexture(uint8_t* data, int width, int height) {
    if (data == nullptr || !pixelBuffer) return;
    if (width == realWidth && height == realHeight) {
        _upload(data);
        return;
    }
    if (scaleBuffer == nullptr) {
        // Once in the texture's life, however often the sizes differ.
        log_warn(kTag, "resccale data %dx%d->%dx%d", width, height, realWidth, realHeight);
        scaleBuffer = new (std::nothrow)
            MVNByteBuffer(getPixelsBufferSize(realWidth, realHeight, MVN_COLOR_BGRA), 0);
        if (scaleBuffer == nullptr || !scaleBuffer->good() || scaleBuffer->ptr() == nullptr) {
            log_error(kTag, "alloc buffer error");
            delete scaleBuffer;
            scaleBuffer = nullptr;
            return;
        }
    }
    if (scaleImage2(data, width, height, MVN_COLOR_BGRA, scaleBuffer->ptr(), realWidth, realHeight) != 0) {
        log_error(kTag, "scale image error");
        return;
    }
    _upload(scaleBuffer->ptr());
}

void MVNOgreMaterialTexturePixelBuffer::_upload(const uint8_t* data) {
    pixelBuffer->lock(Ogre::HardwareBuffer::HBL_DISCARD);
    const Ogre::PixelBox& box = pixelBuffer->getCurrentLock();
    uint8_t* dst = box.data;
    const size_t rowBytes = static_cast<size_t>(realWidth) * 4;
    const size_t pitchBytes = box.rowPitch * 4;
    if (pitchBytes == rowBytes) {
        std::memcpy(dst, data, rowBytes * realHeight);
    } else {
        // The engine may pad rows; the frame's rows follow without a gap.
        for (int y = 0; y < realHeight; ++y) {
            std::memcpy(dst + y * pitchBytes, data + y * rowBytes, rowBytes);
        }
    }
    pixelBuffer->unlock();
}

}  // namespace Morvane
