#include "MVNImageSequenceSink.h"

#include <cstdio>
#include <regex>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/imgutils.h>
#include <libswscale/swscale.h>
}

namespace Morvane {

MVNImageSequenceSink::MVNImageSequenceSink(const std::string& pattern, int firstNumber)
    : mPattern(pattern), mNumber(firstNumber) {}

MVNImageSequenceSink::~MVNImageSequenceSink() { close(); }

std::string MVNImageSequenceSink::fileName(const std::string& pattern, int number) {
    // Exactly one integer conversion, optionally zero-padded; "%%" is a literal.
    static const std::regex conversion("%0?[0-9]*d");
    std::string withoutLiterals = std::regex_replace(pattern, std::regex("%%"), "");
    auto begin = std::sregex_iterator(withoutLiterals.begin(), withoutLiterals.end(), conversion);
    if (std::distance(begin, std::sregex_iterator()) != 1) return "";
    if (std::count(withoutLiterals.begin(), withoutLiterals.end(), '%') != 1) return "";
    char name[4096];
    int n = std::snprintf(name, sizeof name, pattern.c_str(), number);
    if (n <= 0 || static_cast<size_t>(n) >= sizeof name) return "";
    return name;
}

int MVNImageSequenceSink::open(int width, int height, int, int, int colorType) {
    mWidth = width;
    mHeight = height;
    if (fileName(mPattern, mNumber).empty()) {
        mError = "the output pattern needs exactly one %d: " + mPattern;
        return -1;
    }
    const AVCodec* codec = avcodec_find_encoder(AV_CODEC_ID_PNG);
    mCodec = codec ? avcodec_alloc_context3(codec) : nullptr;
    mFrame = av_frame_alloc();
    mPacket = av_packet_alloc();
    if (!codec || !mCodec || !mFrame || !mPacket) {
        mError = "no PNG encoder available";
        return -1;
    }
    mCodec->width = width;
    mCodec->height = height;
    mCodec->pix_fmt = AV_PIX_FMT_RGBA;
    mCodec->time_base = AVRational{1, 25};
    if (avcodec_open2(mCodec, codec, nullptr) < 0) {
        mError = "cannot open the PNG encoder";
        return -1;
    }
    mFrame->format = AV_PIX_FMT_RGBA;
    mFrame->width = width;
    mFrame->height = height;
    if (av_frame_get_buffer(mFrame, 0) < 0) {
        mError = "out of memory";
        return -1;
    }
    AVPixelFormat src = colorType == 28 ? AV_PIX_FMT_BGRA : AV_PIX_FMT_RGBA;
    mSws = sws_getContext(width, height, src, width, height, AV_PIX_FMT_RGBA, SWS_POINT, nullptr, nullptr, nullptr);
    if (!mSws) {
        mError = "cannot set up the colour conversion";
        return -1;
    }
    return 0;
}

int MVNImageSequenceSink::write(const uint8_t* pixels, int stride) {
    if (!mSws || av_frame_make_writable(mFrame) < 0) {
        mError = "output not open";
        return -1;
    }
    const uint8_t* src[4] = {pixels, nullptr, nullptr, nullptr};
    int srcStride[4] = {stride, 0, 0, 0};
    sws_scale(mSws, src, srcStride, 0, mHeight, mFrame->data, mFrame->linesize);
    if (avcodec_send_frame(mCodec, mFrame) < 0 || avcodec_receive_packet(mCodec, mPacket) < 0) {
        mError = "PNG encoding failed";
        return -1;
    }
    std::string name = fileName(mPattern, mNumber++);
    std::string temp = name + ".part";
    FILE* f = std::fopen(temp.c_str(), "wb");
    bool ok = f && std::fwrite(mPacket->data, 1, static_cast<size_t>(mPacket->size), f) ==
                       static_cast<size_t>(mPacket->size);
    if (f && std::fclose(f) != 0) ok = false;
    av_packet_unref(mPacket);
    if (!ok || std::rename(temp.c_str(), name.c_str()) != 0) {
        std::remove(temp.c_str());
        mError = "cannot write " + name;
        return -1;
    }
    mWritten.push_back(name);
    return 0;
}

int MVNImageSequenceSink::finish() {
    close();
    return 0;
}

void MVNImageSequenceSink::abort() {
    for (const auto& name : mWritten) std::remove(name.c_str());
    mWritten.clear();
    close();
}

void MVNImageSequenceSink::close() {
    avcodec_free_context(&mCodec);
    av_frame_free(&mFrame);
    av_packet_free(&mPacket);
    sws_freeContext(mSws);
    mSws = nullptr;
}

}  // namespace Morvane
