#include "MVNSegmentJoin.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <memory>

extern "C" {
#include <libavformat/avformat.h>
}

#include "MVNChunkPlan.h"
#include "MVNSoundSource.h"

namespace Morvane {
namespace {

std::string avError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {0};
    av_strerror(code, text, sizeof text);
    return text;
}

struct InputCloser {
    void operator()(AVFormatContext* c) const { avformat_close_input(&c); }
};
using Input = std::unique_ptr<AVFormatContext, InputCloser>;

struct PacketFree {
    void operator()(AVPacket* p) const { av_packet_free(&p); }
};

// One segment, opened and its tags read.
struct Segment {
    std::string path;
    Input input;
    int stream = -1;
    int index = 0;
    int count = 0;
    int first = 0;
    int last = 0;
};

int openInput(const std::string& path, Input& input, std::string& error) {
    AVFormatContext* c = nullptr;
    int rc = avformat_open_input(&c, path.c_str(), nullptr, nullptr);
    if (rc < 0) {
        error = path + ": " + avError(rc);
        return -1;
    }
    input.reset(c);
    if ((rc = avformat_find_stream_info(c, nullptr)) < 0) {
        error = path + ": " + avError(rc);
        return -1;
    }
    return 0;
}

bool readTags(Segment& s, std::string& error) {
    const AVDictionaryEntry* chunk = av_dict_get(s.input->metadata, MVNSegmentJoin::kChunkTag, nullptr, 0);
    const AVDictionaryEntry* frames = av_dict_get(s.input->metadata, MVNSegmentJoin::kFramesTag, nullptr, 0);
    MVNChunkPlan plan;
    std::string ignored;
    int consumed = 0;
    if (!chunk || !frames || !MVNChunkPlan::parse(chunk->value, plan, ignored) ||
        std::sscanf(frames->value, "%d:%d%n", &s.first, &s.last, &consumed) != 2 ||
        consumed != static_cast<int>(std::strlen(frames->value)) || s.first < 0 || s.last < s.first) {
        error = s.path + ": not a segment written by mvn-render --chunk";
        return false;
    }
    s.index = plan.index();
    s.count = plan.count();
    return true;
}

std::string name(const Segment& s) {
    return "chunk " + std::to_string(s.index) + "/" + std::to_string(s.count) + " (" + s.path + ")";
}

// The rate the timestamps step at. The average rate is worked out from the
// container's duration, which an edit list may shorten, so it comes second.
AVRational frameRate(const AVStream* st) { return st->r_frame_rate.num ? st->r_frame_rate : st->avg_frame_rate; }

bool sameEncoding(const AVStream* a, const AVStream* b) {
    const AVCodecParameters* p = a->codecpar;
    const AVCodecParameters* q = b->codecpar;
    return p->codec_id == q->codec_id && p->width == q->width && p->height == q->height &&
           p->format == q->format && p->extradata_size == q->extradata_size &&
           (p->extradata_size == 0 || std::memcmp(p->extradata, q->extradata, p->extradata_size) == 0) &&
           av_cmp_q(a->time_base, b->time_base) == 0 && av_cmp_q(frameRate(a), frameRate(b)) == 0;
}

// The temporary name keeps the extension so that libavformat still picks
// the container.
std::string tempPathFor(const std::string& path) {
    auto slash = path.rfind('/');
    auto dot = path.rfind('.');
    std::string dir = slash == std::string::npos ? "" : path.substr(0, slash + 1);
    std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    std::string ext = dot == std::string::npos || (slash != std::string::npos && dot < slash) ? "" : path.substr(dot);
    return dir + "." + base + ".part" + ext;
}

}  // namespace

MVNSegmentJoin::Result MVNSegmentJoin::join(const std::string& output, const std::vector<std::string>& segmentPaths,
                                            const std::string& sound) {
    mFrames = 0;
    if (segmentPaths.empty()) {
        mError = "--join needs the segments to join";
        return BadInput;
    }
    std::vector<Segment> segments(segmentPaths.size());
    for (size_t i = 0; i < segments.size(); ++i) {
        Segment& s = segments[i];
        s.path = segmentPaths[i];
        if (openInput(s.path, s.input, mError) != 0 || !readTags(s, mError)) return BadInput;
        s.stream = av_find_best_stream(s.input.get(), AVMEDIA_TYPE_VIDEO, -1, -1, nullptr, 0);
        if (s.stream < 0) {
            mError = s.path + ": no video in it";
            return BadInput;
        }
    }
    std::stable_sort(segments.begin(), segments.end(),
                     [](const Segment& a, const Segment& b) { return a.index < b.index; });
    const int count = segments.front().count;
    for (size_t i = 0; i < segments.size(); ++i) {
        const Segment& s = segments[i];
        if (s.count != count) {
            mError = name(s) + " belongs to a render of " + std::to_string(s.count) + " chunks, " +
                     name(segments.front()) + " to one of " + std::to_string(count);
            return BadInput;
        }
        if (i > 0 && s.index == segments[i - 1].index) {
            mError = "chunk " + std::to_string(s.index) + "/" + std::to_string(count) + " is given twice (" +
                     segments[i - 1].path + " and " + s.path + ")";
            return BadInput;
        }
        if (s.index != static_cast<int>(i) + 1) {
            mError = "chunk " + std::to_string(i + 1) + "/" + std::to_string(count) + " is missing";
            return BadInput;
        }
        if (i > 0 && s.first != segments[i - 1].last + 1) {
            mError = name(s) + " holds frames " + std::to_string(s.first) + ":" + std::to_string(s.last) +
                     ", which do not follow frame " + std::to_string(segments[i - 1].last) + " of " +
                     name(segments[i - 1]);
            return BadInput;
        }
        if (i > 0 && !sameEncoding(s.input->streams[s.stream], segments.front().input->streams[segments.front().stream])) {
            mError = name(s) + " was encoded differently from " + name(segments.front());
            return BadInput;
        }
    }
    if (segments.size() != static_cast<size_t>(count)) {
        mError = "chunk " + std::to_string(segments.size() + 1) + "/" + std::to_string(count) + " is missing";
        return BadInput;
    }

    const AVStream* model = segments.front().input->streams[segments.front().stream];
    const AVRational rate = frameRate(model);
    if (rate.num <= 0 || rate.den <= 0) {
        mError = segments.front().path + ": no frame rate";
        return BadInput;
    }
    const int origin = segments.front().first;
    const int total = segments.back().last - origin + 1;

    const std::string temp = tempPathFor(output);
    AVFormatContext* out = nullptr;
    int rc = avformat_alloc_output_context2(&out, nullptr, nullptr, temp.c_str());
    if (rc < 0 || !out) {
        mError = "cannot create " + output + ": " + avError(rc);
        return BadInput;
    }
    MVNSoundSource soundIn;
    if (!sound.empty() && soundIn.open(sound, out->oformat) < 0) {
        mError = soundIn.error();
        avformat_free_context(out);
        return BadInput;
    }
    bool opened = false;
    auto fail = [&](Result r, const std::string& text) {
        mError = text;
        if (opened) avio_closep(&out->pb);
        avformat_free_context(out);
        std::remove(temp.c_str());
        return r;
    };

    AVStream* video = avformat_new_stream(out, nullptr);
    AVStream* audio = !sound.empty() ? avformat_new_stream(out, nullptr) : nullptr;
    if (!video || (!sound.empty() && !audio)) return fail(Failed, "out of memory");
    avcodec_parameters_copy(video->codecpar, model->codecpar);
    video->codecpar->codec_tag = 0;
    video->time_base = model->time_base;
    video->avg_frame_rate = rate;
    if (audio) soundIn.describe(audio);
    if (!(out->oformat->flags & AVFMT_NOFILE)) {
        if ((rc = avio_open(&out->pb, temp.c_str(), AVIO_FLAG_WRITE)) < 0)
            return fail(Failed, "cannot write " + output + ": " + avError(rc));
        opened = true;
    }
    if ((rc = avformat_write_header(out, nullptr)) < 0)
        return fail(audio ? BadInput : Failed, "cannot write the header of " + output + ": " + avError(rc) +
                                                   (audio ? " (does the container take this sound?)" : ""));

    std::unique_ptr<AVPacket, PacketFree> pkt(av_packet_alloc());
    std::unique_ptr<AVPacket, PacketFree> soundPkt(av_packet_alloc());
    if (!pkt || !soundPkt) return fail(Failed, "out of memory");
    // The video ends after its last frame; sound past that is cut.
    const int64_t videoEnd = av_rescale_q(total, av_inv_q(rate), model->time_base);
    bool soundLeft = audio != nullptr;
    bool soundHeld = false;
    // Copies the sound that plays before `until` (in the video's time base),
    // so the file stays interleaved without holding the sound in memory.
    auto pumpSound = [&](int64_t until) -> int {
        while (soundLeft) {
            if (!soundHeld) {
                int r = soundIn.next(soundPkt.get());
                if (r == AVERROR_EOF) {
                    soundLeft = false;
                    return 0;
                }
                if (r < 0) return r;
                soundHeld = true;
            }
            const int64_t at = soundPkt->dts != AV_NOPTS_VALUE ? soundPkt->dts : soundPkt->pts;
            if (soundPkt->pts != AV_NOPTS_VALUE &&
                av_compare_ts(soundPkt->pts, soundIn.timeBase(), videoEnd, model->time_base) >= 0) {
                av_packet_unref(soundPkt.get());
                soundLeft = false;
                return 0;
            }
            if (until != INT64_MAX && at != AV_NOPTS_VALUE &&
                av_compare_ts(at, soundIn.timeBase(), until, model->time_base) > 0)
                return 0;
            av_packet_rescale_ts(soundPkt.get(), soundIn.timeBase(), audio->time_base);
            soundPkt->stream_index = audio->index;
            soundPkt->pos = -1;
            soundHeld = false;
            int r = av_interleaved_write_frame(out, soundPkt.get());
            if (r < 0) return r;
        }
        return 0;
    };

    for (const Segment& s : segments) {
        const AVStream* in = s.input->streams[s.stream];
        const int64_t offset = av_rescale_q(s.first - origin, av_inv_q(rate), in->time_base);
        int packets = 0;
        for (;;) {
            rc = av_read_frame(s.input.get(), pkt.get());
            if (rc == AVERROR_EOF) break;
            if (rc < 0) return fail(BadInput, s.path + ": " + avError(rc));
            if (pkt->stream_index != s.stream) {
                av_packet_unref(pkt.get());
                continue;
            }
            ++packets;
            if (pkt->pts != AV_NOPTS_VALUE) pkt->pts += offset;
            if (pkt->dts != AV_NOPTS_VALUE) pkt->dts += offset;
            if ((rc = pumpSound(pkt->dts != AV_NOPTS_VALUE ? pkt->dts : pkt->pts)) < 0)
                return fail(BadInput, soundIn.error());
            av_packet_rescale_ts(pkt.get(), in->time_base, video->time_base);
            pkt->stream_index = video->index;
            pkt->pos = -1;
            if ((rc = av_interleaved_write_frame(out, pkt.get())) < 0)
                return fail(Failed, "cannot write " + output + ": " + avError(rc));
        }
        const int expected = s.last - s.first + 1;
        if (packets != expected)
            return fail(BadInput, name(s) + " holds " + std::to_string(packets) + " frames where its tags say " +
                                      std::to_string(expected) + " (" + std::to_string(s.first) + ":" +
                                      std::to_string(s.last) + ")");
    }
    if ((rc = pumpSound(INT64_MAX)) < 0) return fail(BadInput, soundIn.error());
    if ((rc = av_write_trailer(out)) < 0) return fail(Failed, "cannot finish " + output + ": " + avError(rc));
    if (opened) avio_closep(&out->pb);
    avformat_free_context(out);
    if (std::rename(temp.c_str(), output.c_str()) != 0) {
        std::remove(temp.c_str());
        mError = "cannot move the joined video to " + output;
        return Failed;
    }
    mFrames = total;
    return Joined;
}

}  // namespace Morvane
