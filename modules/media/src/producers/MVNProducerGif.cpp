#include "producers/MVNProducerGif.h"

#include <algorithm>
#include <cmath>
#include <cstring>

#include "core/MVNLog.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libswscale/swscale.h>
}

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerGif";
// An animation is held whole in memory; beyond this it is refused.
const size_t kMaxBytes = size_t(512) << 20;
// A picture without a stated delay shows for a tenth of a second, as
// browsers show it.
const double kDefaultDelay = 0.1;
}  // namespace

MVNProducerGif::MVNProducerGif(const MVNProfile& profile) : MVNMediaProducer(profile, "codec.gif", kTag) {}

MVNProducerGif::~MVNProducerGif() = default;

void MVNProducerGif::release() {
    MVNMediaProducer::release();
    mPictures.clear();
}

int MVNProducerGif::_open(const std::string& path, int& width, int& height, int& positions) {
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0 ||
        avformat_find_stream_info(format, nullptr) < 0) {
        log_error(kTag, "init failed, %s does not open", path.c_str());
        avformat_close_input(&format);
        return -1;
    }
    const AVCodec* decoder = nullptr;
    int stream = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, &decoder, 0);
    AVCodecContext* context = stream >= 0 && decoder != nullptr ? avcodec_alloc_context3(decoder) : nullptr;
    if (context == nullptr || avcodec_parameters_to_context(context, format->streams[stream]->codecpar) < 0 ||
        avcodec_open2(context, decoder, nullptr) < 0) {
        log_error(kTag, "init failed, %s has no pictures", path.c_str());
        avcodec_free_context(&context);
        avformat_close_input(&format);
        return -1;
    }
    const double timeBase = av_q2d(format->streams[stream]->time_base);
    AVPacket* packet = av_packet_alloc();
    AVFrame* frame = av_frame_alloc();
    SwsContext* sws = nullptr;
    mPictures.clear();
    size_t bytes = 0;
    double end = 0;
    bool tooLarge = false;
    auto receive = [&]() {
        while (!tooLarge && avcodec_receive_frame(context, frame) == 0) {
            int w = frame->width;
            int h = frame->height;
            sws = sws_getCachedContext(sws, w, h, static_cast<AVPixelFormat>(frame->format), w, h, AV_PIX_FMT_BGRA,
                                       SWS_BICUBIC, nullptr, nullptr, nullptr);
            Picture picture;
            int64_t pts = frame->best_effort_timestamp != AV_NOPTS_VALUE ? frame->best_effort_timestamp : 0;
            picture.start = mPictures.empty() ? 0.0 : pts * timeBase;
            picture.bgra.resize(static_cast<size_t>(w) * h * 4);
            bytes += picture.bgra.size();
            if (bytes > kMaxBytes || sws == nullptr || (!mPictures.empty() && (w != width || h != height))) {
                tooLarge = bytes > kMaxBytes;
                av_frame_unref(frame);
                if (!tooLarge) continue;
                break;
            }
            width = w;
            height = h;
            uint8_t* dst[4] = {picture.bgra.data()};
            int lines[4] = {w * 4};
            sws_scale(sws, frame->data, frame->linesize, 0, h, dst, lines);
            double delay = frame->pkt_duration > 0 ? frame->pkt_duration * timeBase : kDefaultDelay;
            end = std::max(end, pts * timeBase + delay);
            mPictures.push_back(std::move(picture));
            av_frame_unref(frame);
        }
    };
    while (!tooLarge && av_read_frame(format, packet) >= 0) {
        if (packet->stream_index == stream && avcodec_send_packet(context, packet) >= 0) receive();
        av_packet_unref(packet);
    }
    avcodec_send_packet(context, nullptr);
    receive();
    sws_freeContext(sws);
    av_frame_free(&frame);
    av_packet_free(&packet);
    avcodec_free_context(&context);
    avformat_close_input(&format);
    if (tooLarge) {
        log_error(kTag, "init failed, %s holds more than %zu MiB of pictures", path.c_str(), kMaxBytes >> 20);
        mPictures.clear();
        return -1;
    }
    if (mPictures.empty()) {
        log_error(kTag, "init failed, %s has no pictures", path.c_str());
        return -1;
    }
    mLoop = std::max(end, kDefaultDelay);
    positions = std::max(1, static_cast<int>(std::ceil(mLoop / _seconds(1) - 1e-6)));
    return 0;
}

size_t MVNProducerGif::_index(int position) const {
    double t = std::fmod(std::max(0.0, _seconds(position)), mLoop);
    auto after = std::upper_bound(mPictures.begin(), mPictures.end(), t + 1e-9,
                                  [](double time, const Picture& p) { return time < p.start; });
    return after == mPictures.begin() ? 0 : static_cast<size_t>(after - mPictures.begin() - 1);
}

uint64_t MVNProducerGif::_pictureKey(int position) {
    return mPictures.empty() ? 0 : static_cast<uint64_t>(_index(position)) + 1;
}

int MVNProducerGif::_picture(int position, uint8_t* bgra) {
    if (mPictures.empty()) return -1;
    const Picture& p = mPictures[_index(position)];
    std::memcpy(bgra, p.bgra.data(), p.bgra.size());
    return 0;
}

}  // namespace Morvane
