#pragma once
#include "FFmpegDecoderImpl.h"
#include "but/Mutex11.h"

namespace codec {

// The client-facing decoder: pictures by position (NextVideo) and audio in
// order (NextAudio), asked for independently from one demuxer. It starts no
// thread; every public call runs whole under one lock, from any thread.
//
// While a stream is being read, packets of the other stream are dropped: one
// object serves one purpose at a time, and a client that reads both seeks the
// other stream after a large step.
class FFmpegDecoderImplAsync : public FFmpegDecoderImpl {
public:
    // `maxWidth`/`maxHeight`/`scale`: the output limits; `reserved` is not
    // used; `audioStream`: the audio stream to prefer, -1 for the best.
    FFmpegDecoderImplAsync(const char* path, int maxWidth, int maxHeight, bool scale, int reserved, int audioStream,
                           bool useHardware);
    ~FFmpegDecoderImplAsync() override;

    int Init() override;
    void Release() override;
    int SeekAudio(double time) override;
    int SeekVideo(double time) override;
    int SeekAudioTo(double time) override;
    // Refused: reads go by stream ("NextFrame Unusable").
    int NextFrame(uint8_t* data, int* size, int* kind, double* time) override;
    // `time` is not used: audio comes in order from the last SeekAudio.
    int NextAudio(double time, uint8_t* data, int* size, int* samples, double* outTime) override;
    // The picture for `time` (seconds of the clip; negative: the next one).
    // Within 10 frames ahead it decodes forward, within 10 frames back it
    // answers 2 and the picture on screen stands; further it seeks.
    int NextVideo(double time, uint8_t* data, int* size, int* kind, double* outTime) override;

    // The calls of the base class, under the lock. Those that read the file
    // (the plain seek, the index traversal, the group dump) move the reading
    // place, so the next picture request starts over from its position.
    int Seek(double time) override;
    int GetMediaInfo(MediaInfo* info) override;
    int LoadKeyInfo() override;
    int DumpGop() override;

    // Seconds of the picture handed out last, -1 before the first.
    double LastVideoTime() const { return last_video_time_; }

protected:
    void _OnPrepareReopen() override;
    void _OnReopen() override;

    int _GetVideo(double time, uint8_t* data, int* size, int* kind, double* outTime);
    int _SeekVideo(double time);
    int _DecodeVideoTo(double t, uint8_t* data, int* size, int* kind, double* outTime);
    int _DecodeVideo(double t, uint8_t* data, int* size, int* kind, double* outTime);
    int _ReceiveVideo(int64_t req, bool flush, uint8_t* data, int* size, int* kind, double* outTime);
    int _DecodeAudio(uint8_t* data, int* size, int* kind, double* outTime);
    void _ClearCounters();
    // Forgets the reading place after a call that moved it.
    void _ForgetPosition();

    Frame* cached_frame_ = nullptr;       // picture decoded by a seek, handed out by the next NextVideo
    AVPacket* audio_pending_pkt_ = nullptr;  // audio packet held back by SeekAudio
    AVPacket* video_pkt_ = nullptr;
    AVPacket* audio_pkt_ = nullptr;
    bool audio_packet_pending_ = false;
    // The next picture is handed out whatever the position rules say: set by
    // a seek and by a request for the next picture.
    bool seek_decode_flag_ = true;
    // A file whose stream ends before its stated end fails every later
    // seek the same way: the first failure is an error, the rest debug.
    bool seek_error_logged_ = false;
    bool audio_seeking_ = false;
    double last_video_time_ = -1.0;
    double audio_clock_ = 0;  // time of the last frame decoded, either kind
    bool debug_codec_ = false;  // "enable_debug_codec" in the working folder at construction
    double estimated_duration_ = 0;
    but::Mutex11 mLock;
    int video_errors_ = 0;
    int audio_errors_ = 0;
    int eagain_count_ = 0;
};

}  // namespace codec
