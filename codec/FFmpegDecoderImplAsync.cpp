#include "FFmpegDecoderImplAsync.h"

#include <algorithm>
#include <chrono>
#include <cstring>
#include <sys/stat.h>
#include <thread>

#include "FramePool.h"
#include "core/MVNLog.h"
#include "StreamScanner.h"
#include "but/AutoLock.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace codec {

namespace {

const char* kTag = "codec::FFmpegDecoderImplAsync";

// A frame this close before the request counts as at it.
const double kTimeEpsilon = 1.1920928955078125e-07;
// Frames within this distance of the last one are reached by decoding (ahead)
// or refused (behind) instead of by a key-frame seek.
const int64_t kSeekDistance = 11;
// Answers of "decoder wants more input" in a row before the call gives up,
// and from which on it waits a little between packets.
const int kEagainLimit = 100;
const int kEagainSleepFrom = 30;

bool FileExists(const char* path) {
    struct stat st;
    return ::stat(path, &st) == 0;
}

}  // namespace

FFmpegDecoderImplAsync::FFmpegDecoderImplAsync(const char* path, int maxWidth, int maxHeight, bool scale, int,
                                               int audioStream, bool useHardware)
    : FFmpegDecoderImpl(path, audioStream) {
    max_width_ = maxWidth;
    max_height_ = maxHeight;
    scale_enabled_ = scale;
    use_hardware_ = useHardware;
    debug_codec_ = FileExists("enable_debug_codec");
}

FFmpegDecoderImplAsync::~FFmpegDecoderImplAsync() {
    FramePool::Instance().Put(cached_frame_);
    cached_frame_ = nullptr;
    av_packet_free(&audio_pending_pkt_);
    av_packet_free(&video_pkt_);
    av_packet_free(&audio_pkt_);
}

void FFmpegDecoderImplAsync::_ClearCounters() {
    video_errors_ = 0;
    audio_errors_ = 0;
    eagain_count_ = 0;
}

int FFmpegDecoderImplAsync::Init() {
    but::AutoLock guard(mLock);
    log_debug(kTag, "=====Init=====");
    int ret = FFmpegDecoderImpl::Init();
    if (ret != 0)
        return ret;
    if (!has_video_ && has_audio_) {
        double estimated = 0;
        if (StreamScanner(*this).EstimateAudioDuration(&estimated) == 0 && estimated > 0) {
            log_info(kTag, "fmt_ctx duration:%.5f, eduration:%.5f", duration_, estimated);
            duration_ = estimated;
            estimated_duration_ = estimated;
        }
    }
    if (!audio_pending_pkt_)
        audio_pending_pkt_ = av_packet_alloc();
    if (!video_pkt_)
        video_pkt_ = av_packet_alloc();
    if (!audio_pkt_)
        audio_pkt_ = av_packet_alloc();
    if (!audio_pending_pkt_ || !video_pkt_ || !audio_pkt_) {
        log_error(kTag, "Could not allocate packets");
        FFmpegDecoderImpl::Release();
        return -1;
    }
    audio_packet_pending_ = false;
    _ClearCounters();
    log_debug(kTag, "=====Init done=====");
    return 0;
}

void FFmpegDecoderImplAsync::Release() {
    but::AutoLock guard(mLock);
    log_debug(kTag, "=====Release=====");
    FramePool::Instance().Put(cached_frame_);
    cached_frame_ = nullptr;
    av_packet_free(&audio_pending_pkt_);
    av_packet_free(&video_pkt_);
    av_packet_free(&audio_pkt_);
    audio_packet_pending_ = false;
    FFmpegDecoderImpl::Release();
    seek_decode_flag_ = true;
    last_video_time_ = -1.0;
    audio_clock_ = 0;
    log_debug(kTag, "=====Release done=====");
}

int FFmpegDecoderImplAsync::Seek(double time) {
    but::AutoLock guard(mLock);
    int ret = FFmpegDecoderImpl::Seek(time);
    _ForgetPosition();
    return ret;
}

int FFmpegDecoderImplAsync::GetMediaInfo(MediaInfo* info) {
    but::AutoLock guard(mLock);
    return FFmpegDecoderImpl::GetMediaInfo(info);
}

int FFmpegDecoderImplAsync::LoadKeyInfo() {
    but::AutoLock guard(mLock);
    const bool reads = inited_ && (key_load_mode_ == 2 || !key_info_);
    int ret = FFmpegDecoderImpl::LoadKeyInfo();
    if (reads)
        _ForgetPosition();
    return ret;
}

int FFmpegDecoderImplAsync::DumpGop() {
    but::AutoLock guard(mLock);
    int ret = FFmpegDecoderImpl::DumpGop();
    _ForgetPosition();
    return ret;
}

void FFmpegDecoderImplAsync::_ForgetPosition() {
    FramePool::Instance().Put(cached_frame_);
    cached_frame_ = nullptr;
    last_frame_index_ = 0;
    seek_decode_flag_ = true;
    audio_packet_pending_ = false;
}

int FFmpegDecoderImplAsync::NextFrame(uint8_t*, int*, int*, double*) {
    log_error(kTag, "NextFrame Unusable");
    return -1;
}

// ---------------------------------------------------------------- video

int FFmpegDecoderImplAsync::NextVideo(double time, uint8_t* data, int* size, int* kind, double* outTime) {
    but::AutoLock guard(mLock);
    if (!inited_ && _Reopen() != 0)
        return -3;
    if (!has_video_) {
        log_error(kTag, "no video stream");
        return -1;
    }
    if (!data || !size || !kind || !outTime)
        return -1;
    int ret = _GetVideo(time, data, size, kind, outTime);
    if (ret == -2 && !seekable_)
        _PrepareReopen();
    return ret;
}

int FFmpegDecoderImplAsync::_GetVideo(double time, uint8_t* data, int* size, int* kind, double* outTime) {
    const bool next = time < 0;
    if (!next) {
        const double t = time + first_video_time_;
        const int64_t req = static_cast<int64_t>(fps_ * t + 0.5);
        const int64_t last = last_frame_index_;
        bool seek = false;
        if (req > last) {
            // A stream that cannot seek reaches every later picture by decoding.
            seek = req - last >= kSeekDistance && seekable_;
        } else if (req == last) {
            // The picture handed out last: it stands, unless a seek decoded
            // one that was not handed out yet or none was handed out.
            if (!seek_decode_flag_ && last_video_time_ >= 0) {
                if (debug_codec_)
                    log_debug(kTag, "not need decode req_position:%lld,last_position:%lld",
                              static_cast<long long>(req), static_cast<long long>(last));
                return 2;
            }
        } else if (last - req < kSeekDistance) {
            if (!seek_decode_flag_) {
                if (debug_codec_)
                    log_debug(kTag, "discard frame req_position:%lld,last_position:%lld", static_cast<long long>(req),
                              static_cast<long long>(last));
                return 2;
            }
        } else {
            seek = true;
        }
        if (seek) {
            if (debug_codec_)
                log_debug(kTag, "fire seek video req_position:%lld,last_position:%lld ", static_cast<long long>(req),
                          static_cast<long long>(last));
            int ret = _SeekVideo(time);
            if (ret != 0)
                return ret;
        }
    }

    if (cached_frame_) {
        Frame* cached = cached_frame_;
        cached_frame_ = nullptr;
        int ret = 0;
        if (cached->size > *size) {
            log_error(kTag, "out buffer too small %d<%d", *size, cached->size);
            ret = 1;
        } else {
            std::memcpy(data, cached->data.data(), static_cast<size_t>(cached->size));
            *size = cached->size;
            *kind = cached->kind;
            *outTime = std::max(0.0, cached->time - first_video_time_);
            last_video_time_ = *outTime;
            seek_decode_flag_ = false;
        }
        FramePool::Instance().Put(cached);
        return ret;
    }

    if (next)
        seek_decode_flag_ = true;
    int ret = _DecodeVideoTo(next ? -1.0 : time + first_video_time_, data, size, kind, outTime);
    if (ret == 0) {
        *outTime = std::max(0.0, *outTime - first_video_time_);
        last_video_time_ = *outTime;
        seek_decode_flag_ = false;
    }
    return ret;
}

int FFmpegDecoderImplAsync::SeekVideo(double time) {
    but::AutoLock guard(mLock);
    _ClearCounters();
    return _SeekVideo(time);
}

int FFmpegDecoderImplAsync::_SeekVideo(double time) {
    if (!inited_ && need_reopen_ && _Reopen() != 0)
        return -3;
    if (!has_video_) {
        log_error(kTag, "video stream not exists, not support seek video");
        return -1;
    }
    log_debug(kTag, "_SeekVideo time:%f", time);
    _ClearQueue();
    last_frame_index_ = 0;
    seek_decode_flag_ = true;
    if (_SeekPreKeyFrame(time + first_video_time_) != 0) {
        log_error(kTag, "_SeekNoKeyFrame failed");
        return -1;
    }
    Frame* frame = FramePool::Instance().Get(frame_buffer_size_);
    int size = static_cast<int>(frame->data.size());
    int kind = 0;
    double decoded = 0;
    int ret = _DecodeVideoTo(time + first_video_time_, frame->data.data(), &size, &kind, &decoded);
    if (ret == 0) {
        frame->kind = kind;
        frame->size = size;
        frame->time = decoded;
        frame->position = last_frame_index_;
        FramePool::Instance().Put(cached_frame_);
        cached_frame_ = frame;
        log_debug(kTag, "_SeekNoKeyFrame %f, cached_frame:%f", time, decoded);
    } else {
        if (!seek_error_logged_) {
            seek_error_logged_ = true;
            log_error(kTag, "seek video decode error");
        } else {
            log_debug(kTag, "seek video decode error");
        }
        FramePool::Instance().Put(frame);
    }
    log_debug(kTag, "_SeekVideo time:%f res=%d", time, ret);
    return ret;
}

int FFmpegDecoderImplAsync::_DecodeVideoTo(double t, uint8_t* data, int* size, int* kind, double* outTime) {
    const int capacity = *size;
    for (;;) {
        if (!inited_) {
            log_error(kTag, "_DecodeVideoTo failed, not init before _DecodeVideo");
            return -3;
        }
        *size = capacity;
        int ret = _DecodeVideo(t, data, size, kind, outTime);
        if (ret == 0) {
            if (*kind != kFrameVideo) {
                log_error(kTag, "error frame video type:%d", *kind);
                return -1;
            }
            if (*outTime + kTimeEpsilon >= t) {
                audio_clock_ = *outTime;
                return 0;
            }
            continue;
        }
        if (ret == -2) {
            log_debug(kTag, "sync demux video over");
            return -2;
        }
        if (ret == -1) {
            log_error(kTag, "error decode to %f", t);
            return -1;
        }
        if (ret == 4) {
            log_warn(kTag, "decode video timeout");
            return -1;
        }
        return ret;
    }
}

int FFmpegDecoderImplAsync::_DecodeVideo(double t, uint8_t* data, int* size, int* kind, double* outTime) {
    const int64_t req = t < 0 ? -1 : static_cast<int64_t>(t * fps_ + 0.5);

    // Pictures parked while the decoder was full come first.
    while (Frame* queued = _PopQueue()) {
        if (queued->position < req || queued->size > *size) {
            FramePool::Instance().Put(queued);
            continue;
        }
        std::memcpy(data, queued->data.data(), static_cast<size_t>(queued->size));
        *size = queued->size;
        *kind = kFrameVideo;
        *outTime = queued->time;
        last_frame_index_ = queued->position;
        FramePool::Instance().Put(queued);
        return 0;
    }

    // Pictures the decoder already holds.
    for (;;) {
        int ret = _ReceiveVideo(req, false, data, size, kind, outTime);
        if (ret == 3) {
            eagain_count_ = 0;
            continue;
        }
        if (ret == 0) {
            eagain_count_ = 0;
            return 0;
        }
        if (ret == -2)
            return -2;
        break;
    }

    for (;;) {
        if (!inited_) {
            log_error(kTag, "_DecodeVideo failed, not init before av_read_frame");
            return -3;
        }
        if (av_read_frame(fmt_ctx_, video_pkt_) < 0)
            break;
        if (video_pkt_->stream_index != video_stream_idx_) {
            av_packet_unref(video_pkt_);
            continue;
        }
        int sent = _SendVideoPacket(video_pkt_);
        av_packet_unref(video_pkt_);
        if (debug_codec_)
            log_debug(kTag, "avcodec_send_packet res=%d, req:%lld", sent, static_cast<long long>(req));
        if (sent < 0 && sent != AVERROR(EAGAIN)) {
            ++video_errors_;
            continue;
        }
        for (;;) {
            int ret = _ReceiveVideo(req, false, data, size, kind, outTime);
            if (ret == 0) {
                eagain_count_ = 0;
                return 0;
            }
            if (ret == 3) {
                eagain_count_ = 0;
                continue;
            }
            if (ret == -2)
                return -2;
            if (ret == 4) {
                ++eagain_count_;
                if (eagain_count_ > kEagainLimit) {
                    log_error(kTag, "get eagain too many times");
                    return 4;
                }
                if (eagain_count_ > kEagainSleepFrom)
                    std::this_thread::sleep_for(std::chrono::milliseconds(10));
            } else if (ret == -1) {
                ++video_errors_;
            }
            break;
        }
    }

    // End of input: the decoder gives out the pictures it still holds.
    log_debug(kTag, "avcodec_send_packet AVERROR_EOF, req:%lld", static_cast<long long>(req));
    int sent = avcodec_send_packet(video_dec_ctx_, nullptr);
    if (sent < 0 && sent != AVERROR_EOF) {
        log_debug(kTag, "Demuxing video over.");
        return -2;
    }
    for (;;) {
        int ret = _ReceiveVideo(req, true, data, size, kind, outTime);
        if (ret == 3)
            continue;
        if (ret == 0) {
            log_debug(kTag, "decode video from cache ts:%.5f", *outTime);
            return 0;
        }
        if (ret == -2 || ret == 4) {
            log_debug(kTag, "Demuxing video over.");
            return -2;
        }
        return ret;
    }
}

int FFmpegDecoderImplAsync::_ReceiveVideo(int64_t req, bool flush, uint8_t* data, int* size, int* kind,
                                          double* outTime) {
    int ret = avcodec_receive_frame(video_dec_ctx_, video_frame_);
    if (ret == 0) {
        const int64_t pts = _FixVfrPts(_GetPts(video_frame_->pts, video_frame_->pkt_dts));
        const double time = pts * av_q2d(video_stream_->time_base);
        int64_t index = static_cast<int64_t>(time * fps_ + 0.5);
        if (index < 0) {
            log_warn(kTag, "error int_position:%d, frome cached, flush:%d", static_cast<int>(index), flush ? 1 : 0);
            index = 0;
        }
        if (index < req) {
            av_frame_unref(video_frame_);
            return 3;
        }
        last_frame_index_ = index;
        int copied = _CopyPicture(video_frame_, data, size);
        av_frame_unref(video_frame_);
        if (copied != 0)
            return 1;
        *kind = kFrameVideo;
        *outTime = time;
        return 0;
    }
    if (ret == AVERROR(EAGAIN))
        return 4;
    if (ret == AVERROR_EOF) {
        log_debug(kTag, "avcodec_receive_frame AVERROR_EOF, req:%lld, flush:%d", static_cast<long long>(req),
                  flush ? 1 : 0);
        return -2;
    }
    if (ret == AVERROR(EINVAL)) {
        log_warn(kTag, "avcodec_receive_frame AVERROR(EINVAL), req:%lld, flush:%d", static_cast<long long>(req),
                 flush ? 1 : 0);
        return 1;
    }
    if (ret == AVERROR_INPUT_CHANGED) {
        log_warn(kTag, "avcodec_receive_frame AVERROR_INPUT_CHANGED, req:%lld, flush:%d", static_cast<long long>(req),
                 flush ? 1 : 0);
        return 1;
    }
    log_error(kTag, "avcodec_receive_frame other error, req:%lld, flush:%d", static_cast<long long>(req),
              flush ? 1 : 0);
    return -1;
}

// ---------------------------------------------------------------- audio

int FFmpegDecoderImplAsync::NextAudio(double, uint8_t* data, int* size, int* samples, double* outTime) {
    but::AutoLock guard(mLock);
    if (!inited_ && _Reopen() != 0)
        return -3;
    if (!has_audio_) {
        log_error(kTag, "no audio stream");
        return -1;
    }
    if (!data || !size || !outTime)
        return -1;
    if (audio_seeking_)
        return 1;
    int kind = 0;
    int ret = _DecodeAudio(data, size, &kind, outTime);
    if (ret == 0) {
        *outTime = std::max(0.0, *outTime - first_video_time_);
        const int frameBytes = audio_converter_.BytesPerSample() * audio_converter_.OutputChannels();
        if (samples)
            *samples = frameBytes > 0 ? *size / frameBytes : 0;
    }
    if (ret == -2 && !seekable_)
        _PrepareReopen();
    return ret;
}

int FFmpegDecoderImplAsync::_DecodeAudio(uint8_t* data, int* size, int* kind, double* outTime) {
    const int capacity = *size;
    if (audio_packet_pending_) {
        audio_packet_pending_ = false;
        int ret = _DecodeAudioPacket(audio_pending_pkt_, data, size, kind, outTime);
        if (ret == 0) {
            audio_clock_ = *outTime;
            return 0;
        }
        if (ret == -1)
            ++audio_errors_;
        *size = capacity;
    }
    // Samples converted earlier that did not fit the last buffer.
    if (_DecodeAudioPacket(nullptr, data, size, kind, outTime) == 0) {
        audio_clock_ = *outTime;
        return 0;
    }
    *size = capacity;
    for (;;) {
        if (!inited_) {
            log_error(kTag, "_DecodeAudio, not init before av_read_frame");
            return -3;
        }
        if (av_read_frame(fmt_ctx_, audio_pkt_) < 0)
            break;
        if (audio_pkt_->stream_index != audio_stream_idx_) {
            av_packet_unref(audio_pkt_);
            continue;
        }
        int ret = _DecodeAudioPacket(audio_pkt_, data, size, kind, outTime);
        if (ret == 0) {
            audio_clock_ = *outTime;
            return 0;
        }
        if (ret == -1)
            ++audio_errors_;
        *size = capacity;
    }
    // End of input: what the decoder still holds.
    if (!audio_draining_) {
        avcodec_send_packet(audio_dec_ctx_, nullptr);
        audio_draining_ = true;
    }
    if (_DecodeAudioPacket(nullptr, data, size, kind, outTime) == 0) {
        log_debug(kTag, "decode audio frame cache ts:%.5f", *outTime);
        audio_clock_ = *outTime;
        return 0;
    }
    *size = capacity;
    log_debug(kTag, "Demuxing audio over.");
    return -2;
}

int FFmpegDecoderImplAsync::SeekAudioTo(double time) { return SeekAudio(time); }

int FFmpegDecoderImplAsync::SeekAudio(double time) {
    but::AutoLock guard(mLock);
    if (time < 0 || time > duration_) {
        log_error(kTag, "SeekAudio error time:%0.3f not in [0,%0.3f]", time, duration_);
        return -1;
    }
    if (!inited_ && need_reopen_ && _Reopen() != 0)
        return -3;
    if (!has_audio_) {
        log_error(kTag, "audio stream not exits, not support seek audio");
        return -1;
    }
    audio_errors_ = 0;
    audio_seeking_ = true;
    const double target = time + first_video_time_;
    int64_t pts = static_cast<int64_t>(target * audio_time_base_recip_);
    if (first_audio_pts_ != AV_NOPTS_VALUE && pts < first_audio_pts_)
        pts = first_audio_pts_;
    audio_packet_pending_ = false;
    av_packet_unref(audio_pending_pkt_);

    if (av_seek_frame(fmt_ctx_, audio_stream_idx_, pts, AVSEEK_FLAG_BACKWARD) < 0) {
        log_warn(kTag, "audio stream av_seek_frame error on time:%f", time);
        if (!has_video_ || _SeekAudioByVideo(target) != 0) {
            log_warn(kTag, "video stream av_seek_frame error on time:%f, prepare reopen", time);
            _PrepareReopen();
            audio_seeking_ = false;
            return -1;
        }
    }
    if (debug_codec_)
        log_debug(kTag, "seek audio %f ok", time);
    _Reset();
    audio_clock_ = time;

    // Hold back the first audio packet at or after the target; the next
    // NextAudio starts with it.
    const double tb = av_q2d(audio_stream_->time_base);
    int count = 0;
    for (;;) {
        if (!inited_) {
            log_error(kTag, "SeekAudio failed, not init before av_read_frame");
            break;
        }
        if (av_read_frame(fmt_ctx_, audio_pending_pkt_) < 0)
            break;
        if (audio_pending_pkt_->stream_index != audio_stream_idx_) {
            av_packet_unref(audio_pending_pkt_);
            continue;
        }
        ++count;
        const double t = _GetPts(audio_pending_pkt_->pts, audio_pending_pkt_->dts) * tb;
        if (t + kTimeEpsilon >= target) {
            audio_packet_pending_ = true;
            break;
        }
        av_packet_unref(audio_pending_pkt_);
    }
    audio_seeking_ = false;
    log_debug(kTag, "seek time:%.4f, read seek packet count:%d", time, count);
    return 0;
}

// ---------------------------------------------------------------- reopen hooks

void FFmpegDecoderImplAsync::_OnPrepareReopen() {
    log_debug(kTag, "_OnPrepareReopen");
    FramePool::Instance().Put(cached_frame_);
    cached_frame_ = nullptr;
    if (audio_pending_pkt_)
        av_packet_unref(audio_pending_pkt_);
    audio_packet_pending_ = false;
}

void FFmpegDecoderImplAsync::_OnReopen() {
    log_debug(kTag, "_OnReopen");
    if (!has_video_ && has_audio_ && estimated_duration_ > 0)
        duration_ = estimated_duration_;
    audio_packet_pending_ = false;
    seek_decode_flag_ = true;
    last_video_time_ = -1.0;
    audio_clock_ = 0;
    _ClearCounters();
}

}  // namespace codec
