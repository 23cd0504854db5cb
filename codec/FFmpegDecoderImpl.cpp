#include "FFmpegDecoderImpl.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <cstring>
#include <sys/stat.h>
#include <thread>

#include "FramePool.h"
#include "GPUInfo.h"
#include "HardwareDecoderOpener.h"
#include "core/MVNLog.h"
#include "OutputSize.h"
#include "StreamScanner.h"
#include "but/AutoLock.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/display.h>
#include <libavutil/pixdesc.h>
}

namespace codec {

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";

bool FileExists(const std::string& path) {
    struct stat st;
    return ::stat(path.c_str(), &st) == 0;
}

// Audio files whose attached picture must not be opened as a video stream.
bool HasAudioExtension(const std::string& path) {
    std::string lower(path);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    for (const char* ext : {".mp3", ".wav", ".wma"}) {
        size_t n = std::strlen(ext);
        if (lower.size() >= n && lower.compare(lower.size() - n, n, ext) == 0)
            return true;
    }
    return false;
}

// Still pictures: one frame, nothing to index or seek.
bool IsStillImageCodec(AVCodecID id) {
    return id == AV_CODEC_ID_JPEGLS || id == AV_CODEC_ID_PNG || id == AV_CODEC_ID_BMP || id == AV_CODEC_ID_JPEG2000;
}

// The full-range formats have the layout of their plain twins; clients only
// need the layout.
int FoldFullRange(int format) {
    switch (format) {
    case AV_PIX_FMT_YUVJ420P: return AV_PIX_FMT_YUV420P;
    case AV_PIX_FMT_YUVJ422P: return AV_PIX_FMT_YUV422P;
    case AV_PIX_FMT_YUVJ444P: return AV_PIX_FMT_YUV444P;
    case AV_PIX_FMT_YUVJ411P: return AV_PIX_FMT_YUV411P;
    default: return format;
    }
}

bool BadRate(double v) { return std::isnan(v) || std::isinf(v) || v == 0; }

// The reader and seeker FFmpeg calls for a file held in memory.
int ReadMemory(void* opaque, uint8_t* buf, int size) {
    auto* m = static_cast<MemoryInput*>(opaque);
    if (m->pos >= m->size)
        return AVERROR_EOF;
    size_t n = std::min(static_cast<size_t>(size), m->size - m->pos);
    std::memcpy(buf, m->data + m->pos, n);
    m->pos += n;
    return static_cast<int>(n);
}

int64_t SeekMemory(void* opaque, int64_t offset, int whence) {
    auto* m = static_cast<MemoryInput*>(opaque);
    int64_t base = 0;
    switch (whence & ~AVSEEK_FORCE) {
    case AVSEEK_SIZE: return static_cast<int64_t>(m->size);
    case SEEK_SET: base = 0; break;
    case SEEK_CUR: base = static_cast<int64_t>(m->pos); break;
    case SEEK_END: base = static_cast<int64_t>(m->size); break;
    default: return AVERROR(EINVAL);
    }
    // Past the end is allowed, as for a file: the next read then ends.
    if (offset < 0 ? base < -offset : offset > INT64_MAX - base)
        return AVERROR(EINVAL);
    m->pos = static_cast<size_t>(base + offset);
    return base + offset;
}

}  // namespace

FFmpegDecoderImpl::FFmpegDecoderImpl(const char* path, int audioStream)
    : path_(path ? path : ""),
      wanted_audio_stream_(audioStream),
      first_video_pts_(AV_NOPTS_VALUE),
      first_audio_pts_(AV_NOPTS_VALUE) {
    thread_count_ = static_cast<int>(std::thread::hardware_concurrency());
}

FFmpegDecoderImpl::~FFmpegDecoderImpl() {
    _Close();
    _ClearQueue();
}

// ---------------------------------------------------------------- opening

void FFmpegDecoderImpl::SetMemoryInput(const uint8_t* data, size_t size) {
    memory_.data = data;
    memory_.size = size;
    memory_.pos = 0;
}

int FFmpegDecoderImpl::Init() {
    if (inited_)
        return 0;
    log_debug(kTag, "=====Init=====");
    if (_Open() != 0) {
        _Close();
        return -1;
    }
    if (video_stream_)
        log_debug(kTag, "video time_base(%d/%d)", video_stream_->time_base.num, video_stream_->time_base.den);
    if (audio_stream_)
        log_debug(kTag, "audio time_base(%d/%d)", audio_stream_->time_base.num, audio_stream_->time_base.den);

    seekable_ = !(fmt_ctx_->iformat->flags & AVFMT_NOFILE);
    if (fmt_ctx_->pb)
        seekable_ = (fmt_ctx_->pb->seekable & AVIO_SEEKABLE_NORMAL) != 0;
    if (seekable_)
        seekable_ = av_seek_frame(fmt_ctx_, -1, 0, AVSEEK_FLAG_BACKWARD) >= 0;
    log_debug(kTag, "seekable:%d", seekable_ ? 1 : 0);

    const bool moving = has_video_ && !IsStillImageCodec(video_stream_->codecpar->codec_id);
    StreamScanner scanner(*this);
    if (moving) {
        if (!key_info_)
            key_info_ = scanner.LoadKeyInfoByIndexEntries();
        if (seekable_) {
            scanner.FindFirstPTS();
            scanner.FindKeyint();
            log_debug(kTag, "first video pts:%lld, first audio pts:%lld", static_cast<long long>(first_video_pts_),
                      static_cast<long long>(first_audio_pts_));
            log_debug(kTag, "keyint_:%d", static_cast<int>(keyint_pts_));
        } else {
            log_debug(kTag, "not seekable media, not use FindFirstPTS and FindKeyint");
            first_video_pts_ = 0;
            first_audio_pts_ = 0;
        }
    }
    if (!packet_)
        packet_ = av_packet_alloc();
    log_info(kTag, "use send/receive frame api");
    log_debug(kTag, "=====Init done=====");
    inited_ = true;

    // A file that states no duration (a Matroska stream written to a pipe)
    // gets one from its last timestamp, so that seeks have a bound.
    if (moving && seekable_ && duration_ <= 0) {
        double estimated = 0;
        if (scanner.EstimateVideoDuration(&estimated) == 0 && estimated > 0) {
            duration_ = estimated;
            estimated_video_duration_ = estimated;
        }
    }
    return 0;
}

int FFmpegDecoderImpl::_Open() {
    if (memory_.data != nullptr) {
        const int kChunk = 64 * 1024;
        auto* chunk = static_cast<unsigned char*>(av_malloc(kChunk));
        fmt_ctx_ = avformat_alloc_context();
        if (chunk != nullptr)
            memory_io_ = avio_alloc_context(chunk, kChunk, 0, &memory_, ReadMemory, nullptr, SeekMemory);
        if (memory_io_ == nullptr || fmt_ctx_ == nullptr) {
            if (memory_io_ == nullptr)
                av_free(chunk);
            log_error(kTag, "Could not allocate the reader of %s", path_.c_str());
            return AVERROR(ENOMEM);
        }
        memory_.pos = 0;
        fmt_ctx_->pb = memory_io_;
        fmt_ctx_->flags |= AVFMT_FLAG_CUSTOM_IO;
    }
    int ret = avformat_open_input(&fmt_ctx_, path_.c_str(), nullptr, nullptr);
    if (ret < 0) {
        log_error(kTag, "Could not open source file %s, exists:%d", path_.c_str(), FileExists(path_) ? 1 : 0);
        return -1;
    }
    if (avformat_find_stream_info(fmt_ctx_, nullptr) < 0) {
        log_error(kTag, "Could not find stream information");
        return -1;
    }
    if (!HasAudioExtension(path_) && _OpenVideo() >= 0) {
        ret = _SetupVideo();
        if (ret != 0)
            return ret;
    }
    int audio = _OpenStream(AVMEDIA_TYPE_AUDIO, wanted_audio_stream_, &audio_dec_ctx_);
    if (audio >= 0) {
        audio_stream_idx_ = audio;
        audio_stream_ = fmt_ctx_->streams[audio];
        ret = _SetupAudio();
        if (ret != 0)
            return ret;
    }
    if (has_video_) {
        video_frame_ = av_frame_alloc();
        if (!video_frame_) {
            log_error(kTag, "Could not allocate video frame");
            return AVERROR(ENOMEM);
        }
    }
    if (has_audio_) {
        audio_frame_ = av_frame_alloc();
        if (!audio_frame_) {
            log_error(kTag, "Could not allocate audio frame");
            return AVERROR(ENOMEM);
        }
    }
    if (!has_video_ && !has_audio_) {
        log_error(kTag, "both audio and video stream not find");
        return -1;
    }
    log_debug(kTag, "has_video:%d, has_audio:%d", has_video_ ? 1 : 0, has_audio_ ? 1 : 0);
    return 0;
}

int FFmpegDecoderImpl::_OpenVideo() {
    if (use_hardware_) {
        HardwareDecoderOpener opener(fmt_ctx_, path_, thread_count_, thread_type_);
        HardwareDecoder hw;
        int ret = -1;
        if (!FileExists("use_d3d_decoder")) {
            ret = opener.OpenByVendor(GPUInfo::Instance().Vendor(), &hw);
            if (ret != 0)
                log_debug(kTag, "open codec by vendor failed, use auto mode");
        }
        if (ret != 0) {
            ret = opener.OpenByAuto(&hw);
            if (ret != 0)
                log_debug(kTag, "open codec by auto failed, use software decoder");
        }
        if (ret == 0) {
            video_dec_ctx_ = hw.context;
            hw_device_ = hw.device;
            hw_pix_fmt_ = hw.hwPixelFormat;
            video_stream_idx_ = hw.stream;
            video_stream_ = fmt_ctx_->streams[hw.stream];
            hw_open_ = true;
            return hw.stream;
        }
    }
    int index = _OpenStream(AVMEDIA_TYPE_VIDEO, -1, &video_dec_ctx_);
    if (index >= 0) {
        video_stream_idx_ = index;
        video_stream_ = fmt_ctx_->streams[index];
    }
    return index;
}

int FFmpegDecoderImpl::_OpenStream(int mediaType, int wanted, AVCodecContext** ctx) {
    const auto type = static_cast<AVMediaType>(mediaType);
    const char* kind = av_get_media_type_string(type);
    int index = av_find_best_stream(fmt_ctx_, type, wanted, -1, nullptr, 0);
    if (index < 0) {
        log_error(kTag, "Could not find %s stream in input file '%s'", kind, path_.c_str());
        return index;
    }
    AVStream* st = fmt_ctx_->streams[index];
    const AVCodec* decoder = avcodec_find_decoder(st->codecpar->codec_id);
    if (!decoder) {
        log_error(kTag, "Failed to find %s codec %s", kind, avcodec_get_name(st->codecpar->codec_id));
        return AVERROR(EINVAL);
    }
    AVCodecContext* c = avcodec_alloc_context3(decoder);
    if (!c) {
        log_error(kTag, "Failed to allocate the %s codec context", kind);
        return AVERROR(ENOMEM);
    }
    int ret = avcodec_parameters_to_context(c, st->codecpar);
    if (ret < 0) {
        log_error(kTag, "Failed to copy %s codec parameters to decoder context", kind);
        avcodec_free_context(&c);
        return ret;
    }
    c->pkt_timebase = st->time_base;
    AVDictionary* opts = nullptr;
    av_dict_set(&opts, "refcounted_frames", "1", 0);
    if (type == AVMEDIA_TYPE_VIDEO) {
        if (thread_count_ > 0) {
            c->thread_count = thread_count_;
            log_debug(kTag, "thread_count:%d", thread_count_);
        }
        if (thread_type_ == "frame") {
            c->thread_type = FF_THREAD_FRAME;
            log_debug(kTag, "thread_type:frame");
        } else if (thread_type_ == "slice") {
            c->thread_type = FF_THREAD_SLICE;
            log_debug(kTag, "thread_type:slice");
        }
    }
    ret = avcodec_open2(c, decoder, &opts);
    av_dict_free(&opts);
    if (ret < 0) {
        log_error(kTag, "Failed to open %s codec", kind);
        avcodec_free_context(&c);
        return ret;
    }
    *ctx = c;
    return index;
}

int FFmpegDecoderImpl::_SetupVideo() {
    AVCodecContext* c = video_dec_ctx_;
    AVStream* st = video_stream_;
    if (c->pix_fmt == AV_PIX_FMT_NONE) {
        log_error(kTag, "Could not find video pixel format");
        return -1;
    }

    const double avg = st->avg_frame_rate.den ? av_q2d(st->avg_frame_rate) : 0;
    const double real = st->r_frame_rate.den ? av_q2d(st->r_frame_rate) : 0;
    fps_ = BadRate(avg) ? real : avg;
    if (real >= 1000 && avg > 0)
        fps_ = av_q2d(av_d2q(avg, 1024));
    if (std::isnan(fps_) || std::isinf(fps_) || fps_ < 1) {
        const double den = static_cast<double>(c->time_base.num) * c->ticks_per_frame;
        fps_ = den > 0 ? c->time_base.den / den : 0;
        if (std::isnan(fps_) || std::isinf(fps_) || fps_ < 1)
            fps_ = c->framerate.num > 0 && c->framerate.den > 0 ? av_q2d(c->framerate) : 25.0;
    }

    if (fmt_ctx_->duration != AV_NOPTS_VALUE && fmt_ctx_->duration > 0)
        duration_ = static_cast<double>(fmt_ctx_->duration) / 1e6;
    else if (st->duration != AV_NOPTS_VALUE && st->duration > 0)
        duration_ = st->duration * av_q2d(st->time_base);
    else
        duration_ = 0;

    pixel_format_name_ = av_get_pix_fmt_name(c->pix_fmt) ? av_get_pix_fmt_name(c->pix_fmt) : "";
    if (hw_open_) {
        const char* hwName = av_get_pix_fmt_name(static_cast<AVPixelFormat>(hw_pix_fmt_));
        log_debug(kTag, "hwaccel: pixel format:%s to soft pixel format:%s", hwName ? hwName : "",
                  av_get_pix_fmt_name(AV_PIX_FMT_NV12));
        pix_fmt_ = AV_PIX_FMT_NV12;
    } else {
        pix_fmt_ = FoldFullRange(c->pix_fmt);
    }
    color_format_ = pix_fmt_;

    bit_rate_ = static_cast<int>(std::min<int64_t>(c->bit_rate, INT32_MAX));

    double rotation = 0;
    if (AVDictionaryEntry* tag = av_dict_get(st->metadata, "rotate", nullptr, 0)) {
        char* end = nullptr;
        long value = std::strtol(tag->value, &end, 10);
        if (end != tag->value && *end == '\0')
            rotation = static_cast<double>(value);
    }
    if (rotation == 0) {
        const uint8_t* matrix = av_stream_get_side_data(st, AV_PKT_DATA_DISPLAYMATRIX, nullptr);
        if (matrix) {
            double r = -av_display_rotation_get(reinterpret_cast<const int32_t*>(matrix));
            if (!std::isnan(r))
                rotation = r;
        }
    }
    rotation_ = rotation - std::floor(rotation / 360 + 0.0025) * 360;
    if (rotation_ == 0)
        rotation_ = 0;  // no "-0"
    log_debug(kTag, "rotation:%f", rotation_);

    origin_width_ = c->width;
    origin_height_ = c->height;
    AVRational sar = st->sample_aspect_ratio;
    if (sar.num <= 0 || sar.den <= 0)
        sar = c->sample_aspect_ratio;
    OutputSize out = OutputSize::Compute(origin_width_, origin_height_, sar.num, sar.den, max_width_, max_height_,
                                         scale_enabled_);
    output_width_ = out.width;
    output_height_ = out.height;
    dar_ = out.dar;
    if (picture_output_.Configure(origin_width_, origin_height_, pix_fmt_, output_width_, output_height_) != 0) {
        log_error(kTag, "Could not find video pixel format");
        return -1;
    }
    frame_buffer_size_ = picture_output_.BufferSize();
    log_info(kTag, "fps:%f duration:%f,pixel:%s", fps_, duration_, pixel_format_name_.c_str());
    log_info(kTag, "origin size:%dx%d outsize:%dx%d, rotation:%f", origin_width_, origin_height_, output_width_,
             output_height_, rotation_);
    has_video_ = true;
    return 0;
}

int FFmpegDecoderImpl::_SetupAudio() {
    AVCodecContext* c = audio_dec_ctx_;
    AVStream* st = audio_stream_;
    audio_time_base_recip_ = st->time_base.num > 0 ? static_cast<double>(st->time_base.den) / st->time_base.num : 0;
    sample_rate_ = c->sample_rate;
    channels_ = c->ch_layout.nb_channels;
    src_sample_format_ = c->sample_fmt;
    if (audio_converter_.Init(c, target_sample_format_, target_channels_, force_resample_) != 0)
        return -1;
    if (!has_video_) {
        if (st->duration != AV_NOPTS_VALUE && st->duration > 0)
            duration_ = st->duration * av_q2d(st->time_base);
        else if (fmt_ctx_->duration != AV_NOPTS_VALUE && fmt_ctx_->duration > 0)
            duration_ = static_cast<double>(fmt_ctx_->duration) / 1e6;
    }
    has_audio_ = true;
    return 0;
}

void FFmpegDecoderImpl::_Close() {
    avcodec_free_context(&video_dec_ctx_);
    avcodec_free_context(&audio_dec_ctx_);
    avformat_close_input(&fmt_ctx_);
    // A custom reader stays with its owner when the file closes.
    if (memory_io_ != nullptr) {
        av_freep(&memory_io_->buffer);
        avio_context_free(&memory_io_);
    }
    picture_output_.Release();
    audio_converter_.Release();
    av_frame_free(&video_frame_);
    av_frame_free(&audio_frame_);
    av_buffer_unref(&hw_device_);
    av_packet_free(&packet_);
    _ClearQueue();
    has_video_ = false;
    has_audio_ = false;
    video_stream_idx_ = -1;
    video_stream_ = nullptr;
    audio_stream_idx_ = -1;
    audio_stream_ = nullptr;
    hw_open_ = false;
    hw_pix_fmt_ = -1;
    video_draining_ = false;
    audio_draining_ = false;
}

void FFmpegDecoderImpl::Release() {
    log_debug(kTag, "=====Release=====");
    _Close();
    inited_ = false;
    need_reopen_ = false;
    last_frame_index_ = 0;
    last_fixed_pts_ = -1;
    log_debug(kTag, "=====Release done=====");
}

// ---------------------------------------------------------------- settings and info

int FFmpegDecoderImpl::GetMediaInfo(MediaInfo* info) {
    if (!info)
        return -1;
    info->duration = static_cast<float>(duration_);
    info->has_video = has_video_;
    info->has_audio = has_audio_;
    info->width = origin_width_;
    info->height = origin_height_;
    info->fps = has_video_ ? static_cast<float>(fps_) : 0.0f;
    info->color_format = color_format_;
    info->pixel_format = pixel_format_name_;
    info->bit_rate = bit_rate_;
    info->sample_rate = sample_rate_;
    info->channels = channels_;
    const int format = has_audio_ ? audio_converter_.OutputFormat() : target_sample_format_;
    info->sample_format = format >= 0 && format <= 9 ? format : -1;
    info->dar = dar_;
    info->rotation = rotation_;
    return inited_ ? 0 : -1;
}

void FFmpegDecoderImpl::SetThreadCount(int count) { thread_count_ = count; }
void FFmpegDecoderImpl::SetThreadType(const char* type) { thread_type_ = type ? type : ""; }
int FFmpegDecoderImpl::GetFrameBufferSize() { return frame_buffer_size_; }
int FFmpegDecoderImpl::GetOutputWidth() { return output_width_; }
int FFmpegDecoderImpl::GetOutputHeight() { return output_height_; }
void FFmpegDecoderImpl::SetAudioSampleFormat(int format) { target_sample_format_ = format; }
void FFmpegDecoderImpl::SetForceResample(bool force) { force_resample_ = force; }
void FFmpegDecoderImpl::SetScaleEnabled(bool enabled) { scale_enabled_ = enabled; }
void FFmpegDecoderImpl::SetMaxWidth(int width) { max_width_ = width; }
void FFmpegDecoderImpl::SetMaxHeight(int height) { max_height_ = height; }
void FFmpegDecoderImpl::SetUseHardware(bool use) { use_hardware_ = use; }

int FFmpegDecoderImpl::DumpGop() {
    if (!inited_ && _Reopen() != 0)
        return -3;
    return StreamScanner(*this).DumpGop();
}

int FFmpegDecoderImpl::LoadKeyInfo() {
    if (!inited_) {
        log_error(kTag, "LoadKeyInfo failed, not initialized");
        return -1;
    }
    StreamScanner scanner(*this);
    if (key_load_mode_ == 2) {
        key_info_.reset();
        key_info_ = scanner.LoadKeyInfoByTraverse();
    } else if (key_info_) {
        log_debug(kTag, "keyinfo exists");
        return 0;
    } else {
        key_info_ = scanner.LoadKeyInfoByIndexEntries();
        if (!key_info_) {
            log_debug(kTag, "load keyinfo by index entries failed, use traverse");
            key_info_ = scanner.LoadKeyInfoByTraverse();
        }
    }
    return key_info_ ? 0 : -1;
}

// ---------------------------------------------------------------- timestamps and pictures

int64_t FFmpegDecoderImpl::_GetPts(int64_t pts, int64_t dts) {
    if (pts == AV_NOPTS_VALUE)
        ++invalid_pts_count_;
    if (dts == AV_NOPTS_VALUE)
        ++invalid_dts_count_;
    if (pts != AV_NOPTS_VALUE && (dts == AV_NOPTS_VALUE || invalid_pts_count_ <= invalid_dts_count_))
        return pts;
    if (dts != AV_NOPTS_VALUE)
        return dts;
    log_debug(kTag, "get_avpackt_pts error, pkt pts and dts both invalid, use 0");
    return 0;
}

int64_t FFmpegDecoderImpl::_FrameStep() const {
    if (!video_stream_ || fps_ <= 0)
        return 0;
    const double tb = av_q2d(video_stream_->time_base);
    return tb > 0 ? static_cast<int64_t>(1.0 / (tb * fps_)) : 0;
}

int64_t FFmpegDecoderImpl::_FixVfrPts(int64_t pts) {
    if (!vfr_)
        return pts;
    const int64_t step = _FrameStep();
    if (last_fixed_pts_ != -1 && pts - last_fixed_pts_ < step) {
        const int64_t fixed = last_fixed_pts_ + step;
        log_debug(kTag, "fixed video pts:%ld->%ld", static_cast<long>(pts), static_cast<long>(fixed));
        pts = fixed;
    }
    last_fixed_pts_ = pts;
    return pts;
}

int FFmpegDecoderImpl::_CopyPicture(AVFrame* frame, uint8_t* data, int* size) {
    return picture_output_.Copy(frame, data, size);
}

// ---------------------------------------------------------------- seeking

void FFmpegDecoderImpl::_Rewind() {
    int ret = avformat_seek_file(fmt_ctx_, -1, INT64_MIN, 0, 0, AVSEEK_FLAG_BACKWARD);
    if (ret < 0 && !(fmt_ctx_->iformat->flags & AVFMT_NO_BYTE_SEEK))
        ret = av_seek_frame(fmt_ctx_, -1, 0, AVSEEK_FLAG_BYTE);
    log_debug(kTag, "_Rewind seek res=%d", ret);
    _Reset();
}

void FFmpegDecoderImpl::_Reset() {
    if (hw_open_ && video_dec_ctx_) {
        // A hardware decoder keeps surfaces in flight; take them out before
        // the flush so that none leaks into the new position.
        int ret = avcodec_send_packet(video_dec_ctx_, nullptr);
        if (ret < 0 && ret != AVERROR_EOF)
            log_debug(kTag, "_Reset, Error during decoding");
        AVFrame* frame = av_frame_alloc();
        if (!frame) {
            log_debug(kTag, "_Reset, Can not alloc frame");
        } else {
            for (;;) {
                ret = avcodec_receive_frame(video_dec_ctx_, frame);
                if (ret == AVERROR(EAGAIN) || ret == AVERROR_EOF)
                    break;
                if (ret < 0) {
                    log_debug(kTag, "_Reset, Error while decoding");
                    break;
                }
                av_frame_unref(frame);
            }
            av_frame_free(&frame);
        }
    }
    if (video_dec_ctx_)
        avcodec_flush_buffers(video_dec_ctx_);
    if (audio_dec_ctx_)
        avcodec_flush_buffers(audio_dec_ctx_);
    _ClearQueue();
    video_draining_ = false;
    audio_draining_ = false;
    // The repair spreads pictures relative to the one before; after a jump
    // the one before is the first picture at the new place.
    last_fixed_pts_ = -1;
}

void FFmpegDecoderImpl::_SetSkipLoopFilter() {
    if (video_dec_ctx_)
        video_dec_ctx_->skip_loop_filter = AVDISCARD_NONREF;
}

int FFmpegDecoderImpl::Seek(double time) {
    if (!inited_ && _Reopen() != 0)
        return -3;
    if (time < 0 || time > duration_) {
        log_error(kTag, "error time:%0.3f not in [0,%0.3f]", time, duration_);
        return -1;
    }
    if (!has_video_) {
        log_error(kTag, "_SeekX failed, not has video");
        return -1;
    }
    return _SeekBackward("_SeekX", time + first_video_time_);
}

int FFmpegDecoderImpl::_SeekBackward(const char* caller, double streamTime) {
    const double tb = av_q2d(video_stream_->time_base);
    const int64_t first = first_video_pts_ == AV_NOPTS_VALUE ? 0 : first_video_pts_;
    const int64_t target = static_cast<int64_t>(streamTime / tb);
    const int64_t seekPts = target > first ? target : 0;
    _SetSkipLoopFilter();
    int ret = av_seek_frame(fmt_ctx_, video_stream_idx_, seekPts, AVSEEK_FLAG_BACKWARD);
    if (ret < 0) {
        log_warn(kTag, "%s av_seek_frame seek_pts:%lld, first_video_pts_:%lld, res=%d", caller,
                 static_cast<long long>(seekPts), static_cast<long long>(first), ret);
        if (seekPts == 0) {
            ret = av_seek_frame(fmt_ctx_, video_stream_idx_, first, AVSEEK_FLAG_BACKWARD);
            log_warn(kTag, "%s av_seek_frame first_video_pts_:%lld, res=%d", caller, static_cast<long long>(first),
                     ret);
        }
    }
    _Reset();
    return ret < 0 ? -1 : 0;
}

int FFmpegDecoderImpl::_SeekNearKeyFrame(double time) {
    const double end = first_video_time_ + duration_;
    if (time < 0 || time > end) {
        log_error(kTag, "_SeekNearKeyFrame error time:%0.3f not in [0,%0.3f]", time, end);
        return -1;
    }
    if (!has_video_) {
        log_error(kTag, "_SeekX failed, not has video");
        return -1;
    }
    return _SeekBackward("_SeekNearKeyFrame", time);
}

int FFmpegDecoderImpl::_SeekPreKeyFrame(double time) {
    const double end = first_video_time_ + duration_;
    if (time < 0 || time > end) {
        log_error(kTag, "_SeekPreKeyFrame error time:%0.3f not in [0,%0.3f]", time, end);
        return -1;
    }
    if (!has_video_) {
        log_error(kTag, "_SeekX failed, not has video");
        return -1;
    }
    _SetSkipLoopFilter();
    const double tb = av_q2d(video_stream_->time_base);
    const int64_t first = first_video_pts_ == AV_NOPTS_VALUE ? 0 : first_video_pts_;
    const int64_t t0 = static_cast<int64_t>(time / tb);
    const int64_t base = t0 > first ? t0 : 0;
    if (av_seek_frame(fmt_ctx_, video_stream_idx_, base, AVSEEK_FLAG_BACKWARD) < 0) {
        log_error(kTag, "could not seek to position %0.3f", time);
        return -1;
    }
    if (keyint_pts_ == 0) {
        _Reset();
        return 0;
    }

    // Demuxers without an index (MPEG-TS, streamed Matroska) may land after
    // the key frame we need: read up to the first key packet, and step back
    // one key interval at a time while it lies after the request.
    int attempt = 1;
    int64_t position = base;
    int res = -1;
    AVPacket* pkt = av_packet_alloc();
    bool done = false;
    while (!done && pkt) {
        if (!inited_) {
            log_error(kTag, "_SeekPreKeyFrame failed, not init");
            av_packet_free(&pkt);
            return -1;
        }
        if (av_read_frame(fmt_ctx_, pkt) < 0) {
            // No key packet up to the end: the demuxer landed after the
            // last key frame, which is an overshoot like any other.
            if (t0 <= first) {
                res = av_seek_frame(fmt_ctx_, video_stream_idx_, base, AVSEEK_FLAG_BACKWARD) < 0 ? -1 : 0;
                break;
            }
            ++attempt;
            position = std::max(first, base - (attempt - 1) * keyint_pts_);
            av_seek_frame(fmt_ctx_, video_stream_idx_, position, AVSEEK_FLAG_BACKWARD);
        } else if (pkt->stream_index == video_stream_idx_ && (pkt->flags & AV_PKT_FLAG_KEY)) {
            const int64_t p = _GetPts(pkt->pts, pkt->dts);
            const double s = p * tb;
            if (p <= base || std::fabs(s - time) < _KeyTolerance()) {
                if (av_seek_frame(fmt_ctx_, video_stream_idx_, position, AVSEEK_FLAG_BACKWARD) < 0)
                    log_error(kTag, "could not seek to position %lld", static_cast<long long>(position));
                else
                    res = 0;
                done = true;
            } else if (t0 <= first) {
                res = av_seek_frame(fmt_ctx_, video_stream_idx_, base, AVSEEK_FLAG_BACKWARD) < 0 ? -1 : 0;
                done = true;
            } else {
                ++attempt;
                position = std::max(first, base - (attempt - 1) * keyint_pts_);
                av_seek_frame(fmt_ctx_, video_stream_idx_, position, AVSEEK_FLAG_BACKWARD);
            }
        }
        av_packet_unref(pkt);
        if (!done && attempt > 4) {
            log_warn(kTag, "_SeekPreKeyFrame failed, repeat %d count", attempt);
            break;
        }
    }
    av_packet_free(&pkt);
    _Reset();
    log_debug(kTag, "SeekPreKeyFrame seek count:%d,res=%d,out_time:%f", attempt, res, position * tb);
    return res;
}

double FFmpegDecoderImpl::_KeyTolerance() const {
    // A key frame this close after the request still counts as landing on
    // it: timestamps of the demuxer and of the caller may differ by rounding,
    // but never by half a frame.
    return fps_ > 0 ? std::min(0.1, 0.5 / fps_) : 0.1;
}

int FFmpegDecoderImpl::_SeekAudioByVideo(double time) {
    const double end = first_video_time_ + duration_;
    if (time < 0 || time > end) {
        log_error(kTag, "_Seek error time:%0.3f not in [%0.3f,%0.3f]", time, 0.0, end);
        return -1;
    }
    if (!has_video_)
        return -1;
    log_debug(kTag, "_SeekAudioByVideo time:%f begin", time);
    const double tb = av_q2d(video_stream_->time_base);
    const int64_t first = first_video_pts_ == AV_NOPTS_VALUE ? 0 : first_video_pts_;
    int64_t seekPts = static_cast<int64_t>(time / tb);
    if (seekPts <= first)
        seekPts = 0;
    _SetSkipLoopFilter();
    int ret = av_seek_frame(fmt_ctx_, video_stream_idx_, seekPts, AVSEEK_FLAG_BACKWARD);
    if (ret < 0) {
        log_warn(kTag, "av_seek_frame failed seek_pts:%lld,first_video_pts_:%lld, res=%d ",
                 static_cast<long long>(seekPts), static_cast<long long>(first), ret);
        if (seekPts == 0) {
            ret = av_seek_frame(fmt_ctx_, video_stream_idx_, first, AVSEEK_FLAG_BACKWARD);
            if (ret < 0)
                log_warn(kTag, "av_seek_frame failed first_video_pts_:%lld, res=%d ", static_cast<long long>(first),
                         ret);
        }
    }
    log_debug(kTag, "_SeekAudioByVideo time:%f done", time);
    return ret < 0 ? -1 : 0;
}

// ---------------------------------------------------------------- reopen

void FFmpegDecoderImpl::_PrepareReopen() {
    if (!inited_)
        return;
    log_info(kTag, "_PrepareReopen");
    _Close();
    _ClearQueue();
    inited_ = false;
    need_reopen_ = true;
    _OnPrepareReopen();
}

int FFmpegDecoderImpl::_Reopen() {
    if (inited_)
        return 0;
    if (!need_reopen_) {
        log_error(kTag, "_Reopen failed, need_reopen:%d", 0);
        return -1;
    }
    _ClearQueue();
    last_fixed_pts_ = -1;
    invalid_pts_count_ = 0;
    invalid_dts_count_ = 0;
    last_frame_index_ = 0;
    log_debug(kTag, "=====reopen =====");
    if (_Open() != 0) {
        // Closed, but the next read tries again: the file may come back.
        _Close();
        return -1;
    }
    if (duration_ <= 0 && estimated_video_duration_ > 0)
        duration_ = estimated_video_duration_;
    if (!packet_)
        packet_ = av_packet_alloc();
    need_reopen_ = false;
    _OnReopen();
    log_debug(kTag, "=====reopen done=====");
    inited_ = true;
    return 0;
}

void FFmpegDecoderImpl::_OnPrepareReopen() {}

void FFmpegDecoderImpl::_OnReopen() {}

// ---------------------------------------------------------------- reading in file order

int FFmpegDecoderImpl::NextFrame(uint8_t* data, int* size, int* kind, double* time) {
    if (!inited_ && _Reopen() != 0)
        return -3;
    if (!data || !size || !kind || !time)
        return -1;
    if (Frame* queued = _PopQueue()) {
        int ret = 0;
        if (queued->size > *size) {
            log_error(kTag, "out buffer too small %d<%d", *size, queued->size);
            ret = 1;
        } else {
            std::memcpy(data, queued->data.data(), static_cast<size_t>(queued->size));
            *size = queued->size;
            *kind = queued->kind;
            *time = std::max(0.0, queued->time - first_video_time_);
        }
        FramePool::Instance().Put(queued);
        return ret;
    }
    bool ended = false;
    for (;;) {
        if (has_video_) {
            int ret = avcodec_receive_frame(video_dec_ctx_, video_frame_);
            if (ret == 0) {
                const int64_t pts = _FixVfrPts(_GetPts(video_frame_->pts, video_frame_->pkt_dts));
                const double t = pts * av_q2d(video_stream_->time_base);
                last_frame_index_ = static_cast<int64_t>(t * fps_ + 0.5);
                int copied = _CopyPicture(video_frame_, data, size);
                av_frame_unref(video_frame_);
                if (copied != 0)
                    return 1;
                *kind = kFrameVideo;
                *time = std::max(0.0, t - first_video_time_);
                return 0;
            }
            if (ret != AVERROR(EAGAIN) && ret != AVERROR_EOF) {
                log_error(kTag, "avcodec_receive_frame other error, req:%lld, flush:%d", -1LL, ended ? 1 : 0);
                return -1;
            }
        }
        if (has_audio_) {
            int ret = _DecodeAudioPacket(nullptr, data, size, kind, time);
            if (ret == 0) {
                *time = std::max(0.0, *time - first_video_time_);
                return 0;
            }
        }
        if (ended)
            return -2;
        int ret = av_read_frame(fmt_ctx_, packet_);
        if (ret < 0) {
            // End of input: let both decoders give out what they hold.
            if (has_video_ && !video_draining_)
                avcodec_send_packet(video_dec_ctx_, nullptr);
            if (has_audio_ && !audio_draining_)
                avcodec_send_packet(audio_dec_ctx_, nullptr);
            video_draining_ = audio_draining_ = true;
            ended = true;
            continue;
        }
        if (has_video_ && packet_->stream_index == video_stream_idx_) {
            int sent = _SendVideoPacket(packet_);
            if (sent < 0 && sent != AVERROR(EAGAIN))
                log_warn(kTag, "avcodec_send_packet res=%d, req:%lld", sent, -1LL);
        } else if (has_audio_ && packet_->stream_index == audio_stream_idx_) {
            int decoded = _DecodeAudioPacket(packet_, data, size, kind, time);
            if (decoded == 0) {
                av_packet_unref(packet_);
                *time = std::max(0.0, *time - first_video_time_);
                return 0;
            }
        }
        av_packet_unref(packet_);
    }
}

int FFmpegDecoderImpl::_SendVideoPacket(AVPacket* packet) {
    for (;;) {
        int ret = avcodec_send_packet(video_dec_ctx_, packet);
        if (ret != AVERROR(EAGAIN))
            return ret;
        // The decoder is full: park a picture so that it takes the packet.
        if (_ReceiveToQueue() != 0)
            return ret;
    }
}

int FFmpegDecoderImpl::_ReceiveToQueue() {
    int ret = avcodec_receive_frame(video_dec_ctx_, video_frame_);
    if (ret != 0)
        return ret;
    const int64_t pts = _FixVfrPts(_GetPts(video_frame_->pts, video_frame_->pkt_dts));
    Frame* frame = FramePool::Instance().Get(frame_buffer_size_);
    int size = static_cast<int>(frame->data.size());
    ret = _CopyPicture(video_frame_, frame->data.data(), &size);
    av_frame_unref(video_frame_);
    if (ret != 0) {
        FramePool::Instance().Put(frame);
        return ret;
    }
    frame->kind = kFrameVideo;
    frame->size = size;
    frame->time = pts * av_q2d(video_stream_->time_base);
    frame->position = static_cast<int64_t>(frame->time * fps_ + 0.5);
    but::AutoLock guard(frame_queue_lock_);
    frame_queue_.push_back(frame);
    return 0;
}

Frame* FFmpegDecoderImpl::_PopQueue() {
    but::AutoLock guard(frame_queue_lock_);
    if (frame_queue_.empty())
        return nullptr;
    Frame* frame = frame_queue_.front();
    frame_queue_.pop_front();
    return frame;
}

void FFmpegDecoderImpl::_ClearQueue() {
    std::deque<Frame*> gone;
    {
        but::AutoLock guard(frame_queue_lock_);
        gone.swap(frame_queue_);
        gone.insert(gone.end(), audio_queue_.begin(), audio_queue_.end());
        audio_queue_.clear();
    }
    for (Frame* f : gone)
        FramePool::Instance().Put(f);
}

// ---------------------------------------------------------------- audio

int FFmpegDecoderImpl::_TakeAudioBlocks(uint8_t* data, int room, double* time) {
    const bool planar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(audio_converter_.OutputFormat()));
    int written = 0;
    but::AutoLock guard(frame_queue_lock_);
    while (!audio_queue_.empty()) {
        Frame* block = audio_queue_.front();
        if (block->size > room - written) {
            if (written > 0)
                break;  // the next call takes it
            log_warn(kTag, "not enough space:%d>%d, %d", block->size, room, written);
            audio_queue_.pop_front();
            FramePool::Instance().Put(block);
            continue;
        }
        // Plane-after-plane formats give one block per call, so that the
        // planes of the block stay whole.
        if (planar && written > 0)
            break;
        std::memcpy(data + written, block->data.data(), static_cast<size_t>(block->size));
        if (written == 0)
            *time = block->time;
        written += block->size;
        audio_queue_.pop_front();
        FramePool::Instance().Put(block);
    }
    return written;
}

int FFmpegDecoderImpl::_DecodeAudioPacket(AVPacket* packet, uint8_t* data, int* size, int* kind, double* outTime) {
    if (!audio_dec_ctx_ || !data || !size)
        return -1;
    const int room = *size;
    double time = 0;
    int written = _TakeAudioBlocks(data, room, &time);
    bool failed = false;
    int samples = 0;
    if (packet) {
        int ret = avcodec_send_packet(audio_dec_ctx_, packet);
        if (ret < 0 && ret != AVERROR_EOF) {
            log_warn(kTag, "Error decoding audio frame (%d)", ret);
            failed = true;
        }
    }
    // Everything the decoder has is converted now, so that the next packet
    // is always accepted.
    for (;;) {
        int ret = avcodec_receive_frame(audio_dec_ctx_, audio_frame_);
        if (ret == AVERROR(EAGAIN) || ret == AVERROR_EOF)
            break;
        if (ret < 0) {
            log_warn(kTag, "Error decoding audio frame (%d)", ret);
            failed = true;
            break;
        }
        samples += audio_frame_->nb_samples;
        if (audio_frame_->nb_samples > 0 && !audio_frame_->extended_data) {
            log_warn(kTag, "Error decoding audio frame, extended_data is null");
            av_frame_unref(audio_frame_);
            break;
        }
        const int bytes = audio_converter_.OutputBytes(audio_frame_);
        if (bytes > 0) {
            Frame* block = FramePool::Instance().GetAudio(bytes);
            int n = audio_converter_.Convert(audio_frame_, block->data.data(), bytes);
            if (n > 0) {
                double t = next_audio_time_;
                if (audio_frame_->pts != AV_NOPTS_VALUE || audio_frame_->pkt_dts != AV_NOPTS_VALUE)
                    t = _GetPts(audio_frame_->pts, audio_frame_->pkt_dts) * av_q2d(audio_stream_->time_base);
                block->kind = kFrameAudio;
                block->size = n;
                block->time = t;
                const int frameBytes = audio_converter_.BytesPerSample() * audio_converter_.OutputChannels();
                if (sample_rate_ > 0 && frameBytes > 0)
                    next_audio_time_ = t + static_cast<double>(n / frameBytes) / sample_rate_;
                but::AutoLock guard(frame_queue_lock_);
                audio_queue_.push_back(block);
            } else {
                FramePool::Instance().Put(block);
            }
        }
        av_frame_unref(audio_frame_);
    }
    if (packet)
        av_packet_unref(packet);
    if (written == 0)
        written = _TakeAudioBlocks(data, room, &time);
    if (written <= 0) {
        if (packet && !failed)
            log_warn(kTag, "decode audio nb_samples:%d, tmp_size:%d", samples, written);
        return failed ? -1 : 4;
    }
    if (written > room) {
        log_warn(kTag, "decode audio overflow out buffer %d>%d,%s", written, room, path_.c_str());
        return -1;
    }
    *size = written;
    if (kind)
        *kind = kFrameAudio;
    if (outTime)
        *outTime = time;
    return 0;
}

}  // namespace codec
