#pragma once
#include <string>

struct AVBufferRef;
struct AVCodecContext;
struct AVFormatContext;

namespace codec {

// A video decoder opened on a hardware device.
struct HardwareDecoder {
    AVCodecContext* context = nullptr;  // opened; owned by the receiver
    AVBufferRef* device = nullptr;      // the device reference; owned by the receiver
    int stream = -1;                    // index of the video stream
    int hwPixelFormat = -1;             // AVPixelFormat asked of the decoder
};

// Opens the video stream of a file on a hardware decoder, by one of two ways:
// the vendor's own decoder family (cuvid on NVIDIA, VAAPI on Intel and AMD),
// or FFmpeg's hardware configurations of the stock decoder, tried in their
// order until one opens. Each failure is logged and leaves nothing behind; the
// caller falls back to software.
class HardwareDecoderOpener {
public:
    HardwareDecoderOpener(AVFormatContext* format, const std::string& path, int threadCount,
                          const std::string& threadType);

    // 0 and `out` filled, or -1.
    int OpenByVendor(const std::string& vendor, HardwareDecoder* out);
    int OpenByAuto(HardwareDecoder* out);

    // The decoder the vendor path uses for a codec, empty when there is none.
    // Logs why a name is missing.
    static std::string DecoderNameByVendor(const std::string& vendor, int codecId);

private:
    AVCodecContext* _AllocContext(const void* decoder, int stream, const char* allocFailure);
    void _ApplyThreads(AVCodecContext* ctx, bool spacedMessages);
    int _OpenOnDevice(AVCodecContext* ctx, const void* decoder, int deviceType, int hwPixelFormat,
                      HardwareDecoder* out);

    AVFormatContext* mFormat;
    std::string mPath;
    int mThreadCount;
    std::string mThreadType;
};

}  // namespace codec
