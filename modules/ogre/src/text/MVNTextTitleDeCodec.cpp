#include "text/MVNTextTitleDeCodec.h"

#include <algorithm>

#include <OgrePixelFormat.h>
#include <OgreTextureManager.h>

#include <cstring>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "MediaInfo.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNColorType.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNText::MVNTextBgDecodec";
const char* const kGroup = "General";

// B,G,R,A bytes in memory. The engine's number 11 is three-byte B,G,R in
// this version, too small for the four bytes a decoded pixel carries.
const Ogre::PixelFormat kTextureFormat = Ogre::PF_BYTE_BGRA;

codec::FFmpegDecoderImplAsync* createDecoder(const char* path, int width, int height) {
    auto* decoder = new codec::FFmpegDecoderImplAsync(path, width, height, true, 0, -1, false);
    codec::MediaInfo info;
    // A file without pictures (sound alone) is no title either.
    if (decoder->Init() != 0 || decoder->GetMediaInfo(&info) != 0 || !info.has_video) {
        log_debug(kTag, "decoder init error");
        decoder->Release();
        delete decoder;
        return nullptr;
    }
    return decoder;
}
}  // namespace

MVNTextTitleDeCodec::~MVNTextTitleDeCodec() {
    // release() normally ran on the render thread; the texture is the
    // engine's, only the decoder is ours to close here.
    if (_decoder != nullptr) {
        _decoder->Release();
        delete _decoder;
        _decoder = nullptr;
    }
}

int MVNTextTitleDeCodec::init(const char* path, bool isMask, const std::string& textID, float fps, int width,
                              int height) {
    if (_initialised) return 0;
    _textID = textID;
    _fps = fps > 0 ? fps : 25.0f;
    _profileWidth = width;
    _profileHeight = height;
    _decoder = path != nullptr && *path != '\0' ? createDecoder(path, width, height) : nullptr;
    if (_decoder == nullptr) {
        log_error(kTag, "_create video decoder failed");
        return -1;
    }
    _initialised = true;
    codec::MediaInfo info;
    _decoder->GetMediaInfo(&info);
    _duration = info.duration;
    _colorFormat = info.color_format;
    _width = _decoder->GetOutputWidth();
    _height = _decoder->GetOutputHeight();
    _frameSize = _decoder->GetFrameBufferSize();
    _textureName = (isMask ? "textTitleMask" : "textTitle") + textID;
    Ogre::TextureManager& textures = Ogre::TextureManager::getSingleton();
    if (!textures.resourceExists(_textureName, kGroup) && _width > 0 && _height > 0) {
        Ogre::TexturePtr texture = textures.createManual(_textureName, kGroup, Ogre::TEX_TYPE_2D,
                                                         static_cast<Ogre::uint>(_width),
                                                         static_cast<Ogre::uint>(_height), 0, kTextureFormat);
        _pixelBuffer = texture->getBuffer(0, 0);
        // Black until the first picture, rather than whatever the driver had.
        std::vector<uint8_t> black(static_cast<size_t>(_width) * _height * 4, 0);
        upload(black.data());
    }
    return 0;
}

void MVNTextTitleDeCodec::update(int frame) {
    MVNFrame* f = nullptr;
    if (decodeVideo(frame, &f) == 0 && f != nullptr && _pixelBuffer) {
        switch (f->colorFormat()) {
            case MVN_COLOR_BLANK:
                break;
            case MVN_COLOR_BGRA:
                MVNOgreManager::getSingleton()->callRenderableWait([&] { upload(f->buffer()->ptr()); },
                                                                   "textBgTextureUpdate");
                break;
            default: {
                MVNByteBuffer* converted = nullptr;
                if (f->getImage(&converted, MVN_COLOR_BGRA) == 0) {
                    MVNOgreManager::getSingleton()->callRenderableWait([&] { upload(converted->ptr()); },
                                                                       "textBgTextureUpdate");
                } else {
                    log_error(kTag, "%s convert color failed", _textureName.c_str());
                }
                MVNByteBufferPool::sRelease(converted);
                break;
            }
        }
    }
    if (f != nullptr) MVNFrame::pushBackPool(f);
}

// Render thread: the one copy from the picture into the locked texture.
void MVNTextTitleDeCodec::upload(const uint8_t* bgra) {
    if (!_pixelBuffer || bgra == nullptr) return;
    _pixelBuffer->lock(Ogre::HardwareBuffer::HBL_DISCARD);
    const Ogre::PixelBox& lock = _pixelBuffer->getCurrentLock();
    const Ogre::PixelBox source(static_cast<Ogre::uint32>(_width), static_cast<Ogre::uint32>(_height), 1,
                                kTextureFormat, const_cast<uint8_t*>(bgra));
    if (lock.format == kTextureFormat && lock.isConsecutive() && lock.getWidth() == static_cast<Ogre::uint32>(_width))
        std::memcpy(lock.data, bgra, static_cast<size_t>(_width) * _height * 4);
    else
        Ogre::PixelUtil::bulkPixelConversion(source, lock);
    _pixelBuffer->unlock();
}

int MVNTextTitleDeCodec::decodeVideo(int frame, MVNFrame** out) {
    if (_decoder == nullptr) {
        log_error(kTag, "decoder is null");
        return -1;
    }
    double time = static_cast<double>(static_cast<float>(frame) / _fps);
    // Past its end a title keeps its last picture: it is decoded once (also
    // when the clip jumps straight past the end), then left standing, since
    // asking the decoder beyond the stream fails on every frame.
    const bool pastEnd = _duration > 0 && time >= _duration;
    if (pastEnd && _lastPictureShown) return 3;
    _lastPictureShown = false;
    if (pastEnd) time = std::max(0.0, static_cast<double>(_duration) - 1.0 / _fps);
    MVNFrame* f = MVNFrame::pullFromPool(1, _frameSize);
    if (f == nullptr) {
        log_error(kTag, "_decodeVideo failed, pull frame error");
        return -1;
    }
    int size = _frameSize, kind = 0;
    double timestamp = 0;
    const int result = _decoder->NextVideo(time, f->buffer()->ptr(), &size, &kind, &timestamp);
    f->setType(1);
    if (result == 0 && kind == codec::kFrameVideo) {
        f->setTimestamp(timestamp);
        f->setSize(size);
        f->setColorFormat(static_cast<MVNColorType>(_colorFormat));
        f->setWidth(_width);
        f->setHeight(_height);
        f->setFrames(static_cast<int>(timestamp * _fps));
        _lastPictureShown = pastEnd;
        *out = f;
        return 0;
    }
    MVNFrame::pushBackPool(f);
    if (result == 0) {
        log_debug(kTag, "push back audio to pool");
        return 1;
    }
    switch (result) {
        case -2:
            log_debug(kTag, "video decoder read end");
            return 3;
        case -1:
            log_debug(kTag, "video decoder error");
            return 1;
        case 1:
        case 2:
            return 1;
        default:
            log_debug(kTag, "video decoder unknown error, fore end");
            return 3;
    }
}

void MVNTextTitleDeCodec::release() {
    Ogre::TextureManager& textures = Ogre::TextureManager::getSingleton();
    _pixelBuffer.reset();
    if (!_textureName.empty() && textures.resourceExists(_textureName, kGroup)) {
        textures.unload(_textureName, kGroup);
        textures.remove(_textureName, kGroup);
    }
    if (_decoder != nullptr) {
        _decoder->Release();
        delete _decoder;
        _decoder = nullptr;
    }
    // The clip is going: a later init opens afresh.
    _initialised = false;
}

}  // namespace Morvane
