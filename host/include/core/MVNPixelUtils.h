#pragma once
// Pixel-format helpers of the host: sizes, names and conversions of the image
// formats below 10000 (FFmpeg's pixel-format numbers), done with libavutil
// and libswscale.
#include <cstdint>

#include "core/MVNColorType.h"

namespace Morvane {

// Text for logs: FFmpeg's name of the format ("bgra"), "rtt", "blank",
// "none", or "unknown".
const char* getColorFormatName(MVNColorType type);

// Bytes of a whole picture, rows packed without padding. 0 for the frame
// kinds without pixels (10001, 10002); -1 for a bad size or format.
int getPixelsBufferSize(int width, int height, MVNColorType type);

// Bytes of one row of the first plane, without padding; -1 for a bad width
// or format.
int getPixelsStride(int width, MVNColorType type);

// Scales a packed picture of `type` into dst (dstW x dstH, same type).
// 0 on success; -1 for a bad argument or a format the scaler can't handle.
int scaleImage2(uint8_t* src, int srcW, int srcH, MVNColorType type, uint8_t* dst, int dstW, int dstH);

// Converts and scales in one pass. dst must hold
// getPixelsBufferSize(dstW, dstH, dstType) bytes. 0 on success, -1 otherwise.
int convertImage(const uint8_t* src, int srcW, int srcH, MVNColorType srcType, uint8_t* dst, int dstW, int dstH,
                 MVNColorType dstType);

}  // namespace Morvane
