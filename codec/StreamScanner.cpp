#include "StreamScanner.h"

#include <algorithm>

#include "FFmpegDecoderImpl.h"
#include "core/MVNLog.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/time.h>
}

namespace codec {

namespace {
const char* kTag = "codec::FFmpegDecoderImpl";

// Budgets of the first-timestamp scan: packets in all, and video packets
// looked at for a changing duration.
const int kFirstPtsPackets = 500;
const int kVfrPackets = 20;
// Files larger than this are read from near their end for a duration.
const int64_t kTailBytes = 4 * 1024 * 1024;

struct PacketGuard {
    AVPacket* pkt = av_packet_alloc();
    ~PacketGuard() { av_packet_free(&pkt); }
};
}  // namespace

StreamScanner::StreamScanner(FFmpegDecoderImpl& decoder) : d(decoder) {}

void StreamScanner::FindFirstPTS() {
    if (d.first_video_pts_ != AV_NOPTS_VALUE || !d.has_video_)
        return;
    PacketGuard guard;
    AVPacket* pkt = guard.pkt;
    int budget = kFirstPtsPackets;
    int videoBudget = kVfrPackets;
    int changes = 0;
    int64_t lastDuration = 0;
    while (pkt && budget-- > 0 && av_read_frame(d.fmt_ctx_, pkt) >= 0) {
        if (pkt->stream_index == d.video_stream_idx_) {
            if (videoBudget > 0 && pkt->duration > 0 && pkt->duration != lastDuration) {
                log_verbose(kTag, "checking VFR: pkt.duration %lld", static_cast<long long>(pkt->duration));
                if (lastDuration > 0)
                    ++changes;
                lastDuration = pkt->duration;
            }
            --videoBudget;
            if (d.first_video_pts_ == AV_NOPTS_VALUE && (pkt->flags & AV_PKT_FLAG_KEY)) {
                const int64_t delta = pkt->pts != AV_NOPTS_VALUE && pkt->dts != AV_NOPTS_VALUE ? pkt->pts - pkt->dts : 0;
                log_debug(kTag, "first_pts %lld dts %lld pts_dts_delta %d", static_cast<long long>(pkt->pts),
                          static_cast<long long>(pkt->dts), static_cast<int>(delta));
                if (pkt->dts != AV_NOPTS_VALUE && pkt->dts < 0)
                    d.first_video_pts_ = 0;
                else
                    d.first_video_pts_ = d._GetPts(pkt->pts, pkt->dts);
            }
        }
        av_packet_unref(pkt);
        if (d.first_video_pts_ != AV_NOPTS_VALUE && (changes >= 3 || videoBudget <= 0))
            break;
    }
    if (changes >= 3)
        log_info(kTag, "meta.media.variable_frame_rate %d", 1);
    if (d.first_video_pts_ != AV_NOPTS_VALUE) {
        d.first_video_time_ = d.first_video_pts_ * av_q2d(d.video_stream_->time_base);
        if (d.has_audio_) {
            d.first_audio_pts_ = static_cast<int64_t>(d.first_video_time_ * d.audio_time_base_recip_);
            d.first_audio_time_ = d.first_video_time_;
        }
    }
    d._Rewind();
}

void StreamScanner::FindKeyint() {
    if (d.keyint_pts_ != 0 || !d.has_video_)
        return;
    const double tb = av_q2d(d.video_stream_->time_base);
    const int64_t step = d._FrameStep();
    const KeyInfo* index = d.key_info_.get();
    PacketGuard guard;
    AVPacket* pkt = guard.pkt;
    int64_t previous = AV_NOPTS_VALUE;
    int shortSteps = 0;
    int count = 0;   // non-key packets after the first key frame
    int keys = 0;    // key frames seen
    bool second = false;
    while (pkt && av_read_frame(d.fmt_ctx_, pkt) >= 0) {
        if (pkt->stream_index != d.video_stream_idx_) {
            av_packet_unref(pkt);
            continue;
        }
        const int64_t ts = d._GetPts(pkt->pts, pkt->dts);
        // Decode order jumps back over B-frames; only a forward step shorter
        // than a frame tells of a variable rate.
        if (previous != AV_NOPTS_VALUE && ts - previous >= 0 && ts - previous < step)
            ++shortSteps;
        previous = ts;
        const bool key = (pkt->flags & AV_PKT_FLAG_KEY) != 0;
        av_packet_unref(pkt);
        if (key) {
            const KeyEntry* entry = index ? index->At(keys) : nullptr;
            if (entry && entry->pts != ts) {
                log_debug(kTag, "index_entries %d not match, please use traverse", keys);
                d.key_load_mode_ = 2;
            }
            ++keys;
            if (!second && keys >= 2 && count > 0)
                second = true;
            if (second && keys >= 4)
                break;
        } else if (keys >= 1 && !second) {
            ++count;
        }
    }
    d._SetSkipLoopFilter();
    d._Rewind();
    if (!second) {
        log_warn(kTag, "not find keyint, not support seek to no key frame");
    } else {
        d.keyint_frames_ = count + 1;
        d.keyint_pts_ = static_cast<int64_t>((count + 1) / d.fps_ / tb + 0.5);
    }
    const int entries = index ? index->Count() : 0;
    if (entries < keys) {
        // Key frames seen, then entries of the index.
        log_debug(kTag, "index_entries %d more than %d, please use traverse", keys, entries);
        d.key_load_mode_ = 2;
    }
    if (shortSteps > 3) {
        d.vfr_ = true;
        log_info(kTag, "variable frame rate need fix pts");
    }
}

std::unique_ptr<KeyInfo> StreamScanner::LoadKeyInfoByIndexEntries() {
    if (!d.has_video_) {
        log_error(kTag, "_LoadKeyInfoByIndexEntries failed, not has video");
        return nullptr;
    }
    const int n = avformat_index_get_entries_count(d.video_stream_);
    if (n <= 0) {
        log_error(kTag, "Invalid nb_index_entries:%d", n);
        return nullptr;
    }
    const double tb = av_q2d(d.video_stream_->time_base);
    std::unique_ptr<KeyInfo> info(new KeyInfo());
    for (int i = 0; i < n; ++i) {
        const AVIndexEntry* e = avformat_index_get_entry(d.video_stream_, i);
        if (e && (e->flags & AVINDEX_KEYFRAME))
            info->Add(e->timestamp, e->timestamp * tb);
    }
    if (info->Count() <= 0) {
        log_error(kTag, "get zero key info time");
        return nullptr;
    }
    return info;
}

std::unique_ptr<KeyInfo> StreamScanner::LoadKeyInfoByTraverse() {
    if (!d.has_video_) {
        log_error(kTag, "_LoadKeyInfoByTraverse failed, not has video");
        return nullptr;
    }
    // From the start whatever was read before: an index of half the file
    // would be worse than none.
    d._Rewind();
    const double tb = av_q2d(d.video_stream_->time_base);
    std::unique_ptr<KeyInfo> info(new KeyInfo());
    PacketGuard guard;
    AVPacket* pkt = guard.pkt;
    while (pkt && av_read_frame(d.fmt_ctx_, pkt) >= 0) {
        if (pkt->stream_index == d.video_stream_idx_ && (pkt->flags & AV_PKT_FLAG_KEY)) {
            const int64_t ts = d._GetPts(pkt->pts, pkt->dts);
            info->Add(ts, ts * tb);
        }
        av_packet_unref(pkt);
    }
    d._Rewind();
    if (info->Count() <= 0) {
        log_error(kTag, "get zero key time");
        return nullptr;
    }
    return info;
}

bool StreamScanner::_SeekNearEnd(int stream, double guess) {
    AVStream* st = d.fmt_ctx_->streams[stream];
    if (guess > 10) {
        const double tb = av_q2d(st->time_base);
        const int64_t target = static_cast<int64_t>((d.first_video_time_ + guess - 5) / tb);
        if (av_seek_frame(d.fmt_ctx_, stream, target, AVSEEK_FLAG_BACKWARD) >= 0) {
            d._Reset();
            return true;
        }
        if (stream == d.video_stream_idx_)
            log_error(kTag, "_EstimateVideoDuration video stream av_seek_frame failed seek_pts:%lld,first_video_pts_:%lld, res=%d",
                      static_cast<long long>(target), static_cast<long long>(d.first_video_pts_), -1);
        else
            log_error(kTag, "_EstimateAudioDuration audio stream av_seek_frame error on time:%f", guess - 5);
    }
    const int64_t size = d.fmt_ctx_->pb ? avio_size(d.fmt_ctx_->pb) : -1;
    if (size > 2 * kTailBytes && !(d.fmt_ctx_->iformat->flags & AVFMT_NO_BYTE_SEEK) &&
        av_seek_frame(d.fmt_ctx_, -1, size - kTailBytes, AVSEEK_FLAG_BYTE) >= 0) {
        d._Reset();
        return true;
    }
    d._Rewind();
    return false;
}

int64_t StreamScanner::_EndOfStream(int stream, bool stampedOnly, const char* interrupted) {
    PacketGuard guard;
    AVPacket* pkt = guard.pkt;
    int64_t end = AV_NOPTS_VALUE;
    while (pkt && av_read_frame(d.fmt_ctx_, pkt) >= 0) {
        if (!d.inited_) {
            log_error(kTag, "%s", interrupted);
            av_packet_unref(pkt);
            break;
        }
        if (pkt->stream_index == stream &&
            (!stampedOnly || pkt->pts != AV_NOPTS_VALUE || pkt->dts != AV_NOPTS_VALUE)) {
            const int64_t ts = d._GetPts(pkt->pts, pkt->dts) + std::max<int64_t>(pkt->duration, 0);
            end = end == AV_NOPTS_VALUE ? ts : std::max(end, ts);
        }
        av_packet_unref(pkt);
    }
    d._Rewind();
    return end;
}

int StreamScanner::EstimateVideoDuration(double* duration) {
    log_debug(kTag, "_EstimateVideoDuration");
    if (!d.has_video_) {
        log_error(kTag, "_EstimateVideoDuration failed, video stream not exists");
        return -1;
    }
    _SeekNearEnd(d.video_stream_idx_, d.duration_);
    const int64_t end =
        _EndOfStream(d.video_stream_idx_, false, "_EstimateVideoDuration, not init before av_read_frame");
    if (end == AV_NOPTS_VALUE)
        return -1;
    *duration = end * av_q2d(d.video_stream_->time_base) - d.first_video_time_;
    return 0;
}

int StreamScanner::EstimateAudioDuration(double* duration) {
    log_debug(kTag, "_EstimateAudioDuration");
    if (!d.has_audio_) {
        log_error(kTag, "_EstimateAudioDuration failed, video stream not exists");
        return -1;
    }
    _SeekNearEnd(d.audio_stream_idx_, d.duration_);
    // Audio packets without any timestamp say nothing about the end.
    const int64_t end =
        _EndOfStream(d.audio_stream_idx_, true, "_EstimateAudioDuration failed, not init before av_read_frame");
    if (end == AV_NOPTS_VALUE)
        return -1;
    *duration = end * av_q2d(d.audio_stream_->time_base) - d.first_video_time_;
    return 0;
}

int StreamScanner::DumpGop() {
    if (!d.has_video_)
        return -1;
    const int64_t start = av_gettime_relative();
    PacketGuard guard;
    AVPacket* pkt = guard.pkt;
    int count = 0;
    double bytes = 0;
    while (pkt && av_read_frame(d.fmt_ctx_, pkt) >= 0) {
        if (pkt->stream_index == d.video_stream_idx_) {
            if ((pkt->flags & AV_PKT_FLAG_KEY) && count > 0) {
                log_debug(kTag, "gop=%d, tmp_size=%f", count, bytes / 1024.0);
                count = 0;
                bytes = 0;
            }
            ++count;
            bytes += pkt->size;
        }
        av_packet_unref(pkt);
    }
    if (count > 0)
        log_debug(kTag, "gop=%d, tmp_size=%f", count, bytes / 1024.0);
    log_info(kTag, "cost time:%f", (av_gettime_relative() - start) / 1e6);
    d._Rewind();
    return 0;
}

}  // namespace codec
