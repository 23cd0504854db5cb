#pragma once
#include <cstdint>
#include <deque>
#include <memory>
#include <string>

#include "AudioConverter.h"
#include "FFmpegDecoder.h"
#include "Frame.h"
#include "KeyInfo.h"
#include "PictureOutput.h"
#include "but/Mutex11.h"

struct AVBufferRef;
struct AVIOContext;
struct AVCodecContext;
struct AVFormatContext;
struct AVFrame;
struct AVPacket;
struct AVStream;

namespace codec {

class StreamScanner;

// A file held in memory and the position FFmpeg's reader has reached in it.
struct MemoryInput {
    const uint8_t* data = nullptr;
    size_t size = 0;
    size_t pos = 0;
};

// The FFmpeg reader: opens a file, finds its first timestamp and key-frame
// interval, and hands out frames of either kind in file order (NextFrame).
// One client uses one decoder from one thread; FFmpegDecoderImplAsync adds
// reads by position behind a lock.
class FFmpegDecoderImpl : public FFmpegDecoder {
public:
    // `audioStream`: the audio stream to prefer, -1 for FFmpeg's best.
    explicit FFmpegDecoderImpl(const char* path, int audioStream = -1);
    ~FFmpegDecoderImpl() override;
    FFmpegDecoderImpl(const FFmpegDecoderImpl&) = delete;
    FFmpegDecoderImpl& operator=(const FFmpegDecoderImpl&) = delete;

    // Reads the file from the `size` bytes at `data` instead of opening the
    // path, for files an application holds in memory; the bytes must outlive
    // the decoder. The path still names the file in messages and its
    // extension still marks a sound file. Takes effect at the next Init.
    void SetMemoryInput(const uint8_t* data, size_t size);

    int Init() override;
    void Release() override;
    // `time` in seconds of the clip; lands on the key frame at or before it.
    int Seek(double time) override;
    int NextFrame(uint8_t* data, int* size, int* kind, double* time) override;
    int GetMediaInfo(MediaInfo* info) override;
    void SetThreadCount(int count) override;
    void SetThreadType(const char* type) override;
    int GetFrameBufferSize() override;
    int GetOutputWidth() override;
    int GetOutputHeight() override;
    void SetAudioSampleFormat(int format) override;
    void SetForceResample(bool force) override;
    void SetScaleEnabled(bool enabled) override;
    void SetMaxWidth(int width) override;
    void SetMaxHeight(int height) override;
    void SetUseHardware(bool use) override;
    int DumpGop() override;
    int LoadKeyInfo() override;

    // State as the scans at open found it.
    bool IsInited() const { return inited_; }
    bool IsSeekable() const { return seekable_; }
    bool UseHardware() const { return use_hardware_; }
    bool IsHardwareOpen() const { return hw_open_; }
    double Duration() const { return duration_; }
    double Fps() const { return fps_; }
    int64_t FirstVideoPts() const { return first_video_pts_; }
    int64_t FirstAudioPts() const { return first_audio_pts_; }
    double FirstVideoTime() const { return first_video_time_; }
    int64_t KeyintPts() const { return keyint_pts_; }
    int KeyintFrames() const { return keyint_frames_; }
    // 2 when the demuxer's index was seen to be wrong and LoadKeyInfo traverses.
    int KeyLoadMode() const { return key_load_mode_; }
    bool IsVariableFrameRate() const { return vfr_; }
    const KeyInfo* GetKeyInfo() const { return key_info_.get(); }
    // The AVPixelFormat of the pictures handed out.
    int OutputPixelFormat() const { return pix_fmt_; }
    // The AVSampleFormat and channel count of the audio handed out.
    int OutputSampleFormat() const { return audio_converter_.OutputFormat(); }
    int OutputChannels() const { return audio_converter_.OutputChannels(); }

protected:
    friend class StreamScanner;

// A file held in memory and the position FFmpeg's reader has reached in it.
struct MemoryInput {
    const uint8_t* data = nullptr;
    size_t size = 0;
    size_t pos = 0;
};

    void _OnPrepareReopen() override;
    void _OnReopen() override;

    // The open sequence shared by Init and _Reopen; -1 or a negative
    // AVERROR on failure, the contexts then stay for _Close.
    int _Open();
    // Frees every FFmpeg object of an open file.
    void _Close();
    // The plain decoder of one stream kind (AVMediaType); returns the stream
    // index or a negative AVERROR.
    int _OpenStream(int mediaType, int wanted, AVCodecContext** ctx);
    // Hardware first when asked for, then the plain decoder.
    int _OpenVideo();
    int _SetupVideo();
    int _SetupAudio();

    // The timestamp of a packet or frame: pts unless pts went missing more
    // often than dts so far.
    int64_t _GetPts(int64_t pts, int64_t dts);
    // Spreads pictures that come closer than one frame onto the nominal grid.
    int64_t _FixVfrPts(int64_t pts);
    // pts units of one frame at the nominal rate.
    int64_t _FrameStep() const;
    // Copies a decoded picture into `data` at the output size and format;
    // 0, or -1 when the picture cannot be converted.
    int _CopyPicture(AVFrame* frame, uint8_t* data, int* size);

    // Back to the start of the file, decoders emptied.
    void _Rewind();
    // Empties the decoders after a seek.
    void _Reset();
    void _SetSkipLoopFilter();
    // Key frame at or before `time` (seconds of the stream, first timestamp
    // included), for demuxers that land on it.
    int _SeekNearKeyFrame(double time);
    // Seeks back to the key frame at or before `streamTime` (seconds on the
    // stream's clock), falling back to the first picture when the demuxer
    // refuses a seek to 0; warnings name `caller`. 0 or -1.
    int _SeekBackward(const char* caller, double streamTime);
    // Lands at or before `time` even where the demuxer overshoots.
    int _SeekPreKeyFrame(double time);
    int _SeekAudioByVideo(double time);
    // How far after the request a key frame may lie and still count as the
    // one to decode from.
    double _KeyTolerance() const;

    // Closes the file so that the next read opens it again.
    void _PrepareReopen();
    int _Reopen();

    // Decodes one audio packet (null: only what the decoder still holds)
    // into `data`; 0 with bytes, 4 when the decoder wants more input, -1.
    int _DecodeAudioPacket(AVPacket* packet, uint8_t* data, int* size, int* kind, double* outTime);
    // Receives one picture into a pooled frame of the queue; 0 when queued.
    int _ReceiveToQueue();
    // Sends a video packet, parking decoded pictures in the queue while the
    // decoder is full.
    int _SendVideoPacket(AVPacket* packet);
    Frame* _PopQueue();
    void _ClearQueue();
    // Moves converted audio blocks into `data` (room bytes); returns the bytes
    // and the time of the first.
    int _TakeAudioBlocks(uint8_t* data, int room, double* time);

    std::string path_;
    AVFormatContext* fmt_ctx_ = nullptr;
    // The bytes of a file read from memory, and the reader FFmpeg calls for
    // them while the file is open (freed by _Close).
    MemoryInput memory_;
    AVIOContext* memory_io_ = nullptr;
    bool has_video_ = false;
    bool has_audio_ = false;

    int video_stream_idx_ = -1;
    AVStream* video_stream_ = nullptr;
    AVCodecContext* video_dec_ctx_ = nullptr;

    int audio_stream_idx_ = -1;
    AVStream* audio_stream_ = nullptr;
    AVCodecContext* audio_dec_ctx_ = nullptr;

    bool inited_ = false;
    bool need_reopen_ = false;
    double duration_ = 0;

    int thread_count_ = 0;
    std::string thread_type_;

    int origin_width_ = 0;
    int origin_height_ = 0;
    double fps_ = 0;
    int frame_buffer_size_ = 0;
    int color_format_ = -1;
    std::string pixel_format_name_;

    int bit_rate_ = 0;
    int wanted_audio_stream_ = -1;
    int src_sample_format_ = -1;
    int sample_rate_ = 0;
    int channels_ = 0;
    double audio_time_base_recip_ = 0;  // audio stream ticks per second

    int target_sample_format_ = 3;  // AV_SAMPLE_FMT_FLT
    int target_channels_ = 2;
    bool force_resample_ = false;

    AudioConverter audio_converter_;
    AVFrame* video_frame_ = nullptr;
    AVFrame* audio_frame_ = nullptr;
    // Converted audio not yet handed out (pool frames of the audio side),
    // under frame_queue_lock_; a buffer too small for a packet loses nothing.
    std::deque<Frame*> audio_queue_;
    double next_audio_time_ = 0;  // for audio frames without timestamps

    bool seekable_ = true;

    int64_t first_video_pts_;  // AV_NOPTS_VALUE until found
    int64_t first_audio_pts_;
    double first_video_time_ = 0;
    double first_audio_time_ = 0;

    int64_t keyint_pts_ = 0;
    int invalid_pts_count_ = 0;
    int invalid_dts_count_ = 0;

    int max_width_ = 0;
    int max_height_ = 0;
    int output_width_ = 0;
    int output_height_ = 0;
    bool scale_enabled_ = false;

    float dar_ = 1.0f;

    PictureOutput picture_output_;  // the scaler and the copy of pictures
    double rotation_ = 0;
    int64_t last_frame_index_ = 0;

    int pix_fmt_ = -1;
    bool use_hardware_ = false;
    bool hw_open_ = false;
    AVBufferRef* hw_device_ = nullptr;
    int hw_pix_fmt_ = -1;

    std::deque<Frame*> frame_queue_;
    but::Mutex11 frame_queue_lock_;

    int keyint_frames_ = 0;
    std::unique_ptr<KeyInfo> key_info_;
    int key_load_mode_ = 0;
    int64_t last_fixed_pts_ = -1;
    bool vfr_ = false;

    double estimated_video_duration_ = 0;
    bool video_draining_ = false;
    bool audio_draining_ = false;
    AVPacket* packet_ = nullptr;
};

}  // namespace codec
