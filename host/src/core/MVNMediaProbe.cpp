#include "core/MVNMediaProbe.h"

#include <algorithm>
#include <cmath>

extern "C" {
#include <libavformat/avformat.h>
}

namespace Morvane {

int MVNMediaProbe::probe(const std::string& path, MVNMediaProbe& out, std::string& reason) {
    out = MVNMediaProbe();
    AVFormatContext* format = nullptr;
    if (avformat_open_input(&format, path.c_str(), nullptr, nullptr) < 0) {
        reason = "does not open as media: " + path;
        return -1;
    }
    int rc = -1;
    if (avformat_find_stream_info(format, nullptr) < 0) {
        reason = "no stream information in " + path;
    } else {
        int v = av_find_best_stream(format, AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        int a = av_find_best_stream(format, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
        out.audio = a >= 0;
        if (v < 0 || (format->streams[v]->disposition & AV_DISPOSITION_ATTACHED_PIC)) {
            reason = "no picture stream in " + path;
        } else {
            AVStream* st = format->streams[v];
            out.video = true;
            out.width = st->codecpar->width;
            out.height = st->codecpar->height;
            AVRational rate = st->avg_frame_rate.num > 0 ? st->avg_frame_rate : st->r_frame_rate;
            out.fps = rate.num > 0 && rate.den > 0 ? av_q2d(rate) : 0;
            if (st->duration != AV_NOPTS_VALUE && st->duration > 0) {
                out.duration = st->duration * av_q2d(st->time_base);
            } else if (format->duration != AV_NOPTS_VALUE && format->duration > 0) {
                out.duration = static_cast<double>(format->duration) / AV_TIME_BASE;
            } else {
                // Animations often state no length: the end of their last picture.
                AVPacket* packet = av_packet_alloc();
                int64_t end = 0;
                while (packet != nullptr && av_read_frame(format, packet) >= 0) {
                    if (packet->stream_index == v && packet->pts != AV_NOPTS_VALUE)
                        end = std::max<int64_t>(end, packet->pts + std::max<int64_t>(packet->duration, 0));
                    av_packet_unref(packet);
                }
                av_packet_free(&packet);
                out.duration = end * av_q2d(st->time_base);
            }
            if (out.width <= 0 || out.height <= 0) {
                reason = "no picture size in " + path;
            } else {
                rc = 0;
            }
        }
    }
    avformat_close_input(&format);
    return rc;
}

int MVNMediaProbe::positions(const MVNProfile& profile) const {
    double fps = profile.fpsDen() > 0 ? static_cast<double>(profile.fpsNum()) / profile.fpsDen() : profile.fps();
    // A position whose start lies inside the file shows a picture of it.
    return std::max(0, static_cast<int>(std::ceil(duration * fps - 1e-6)));
}

}  // namespace Morvane
