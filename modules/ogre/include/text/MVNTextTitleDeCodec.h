#pragma once
#include <cstdint>
#include <string>

#include <OgreHardwarePixelBuffer.h>

namespace codec {
class FFmpegDecoderImplAsync;
}

namespace Morvane {

class MVNFrame;

// One video behind a text clip's title plane (the picture or its mask),
// decoded by position straight into a texture of its own. The decoder reads
// on the thread that asks for a frame (the clip's reader thread); only the
// copy into the texture hops to the render thread.
class MVNTextTitleDeCodec {
public:
    MVNTextTitleDeCodec() = default;
    virtual ~MVNTextTitleDeCodec();
    MVNTextTitleDeCodec(const MVNTextTitleDeCodec&) = delete;
    MVNTextTitleDeCodec& operator=(const MVNTextTitleDeCodec&) = delete;

    // Opens `path` with the profile's size as its limit and makes the
    // texture "textTitle"+textID (or "textTitleMask"+textID). Render thread.
    // Acts once: 0 at once when already initialised, -1 when the video does
    // not open.
    int init(const char* path, bool isMask, const std::string& textID, float fps, int width, int height);
    // Puts picture `frame` of the video (at the profile's fps) into the
    // texture. A picture not delivered leaves the last one standing. Any
    // thread but the render thread.
    void update(int frame);
    // Removes the texture and closes the decoder. Render thread.
    void release();

    bool initialised() const { return _initialised; }
    const std::string& textureName() const { return _textureName; }
    int width() const { return _width; }
    int height() const { return _height; }

private:
    // 0: a picture in *out; 1: nothing this time; 3: end of the stream.
    int decodeVideo(int frame, MVNFrame** out);
    void upload(const uint8_t* bgra);

    bool _initialised = false;
    std::string _textID;
    std::string _textureName;
    int32_t _width = 0, _height = 0;
    int32_t _frameSize = 0;
    int32_t _colorFormat = -1;
    float _duration = 0;
    bool _lastPictureShown = false;
    float _fps = 25;
    int32_t _profileWidth = 0, _profileHeight = 0;
    codec::FFmpegDecoderImplAsync* _decoder = nullptr;  // owned
    Ogre::HardwarePixelBufferSharedPtr _pixelBuffer;
};

}  // namespace Morvane
