#pragma once
#include <cstdint>

#include "MediaInfo.h"

namespace codec {

// Result codes of the read calls (NextFrame, NextVideo, NextAudio).
enum ReadResult : int {
    kReadOk = 0,          // a frame was written
    kReadError = -1,
    kReadEnd = -2,        // end of stream
    kReadNotInit = -3,    // closed, and reopening failed
    kReadUnusable = 1,    // the frame could not be used (copy failed, decoder refused)
    kReadNothing = 2,     // nothing to do: the picture last handed out stands
    kReadBefore = 3,      // the frame lies before the request and was skipped
    kReadAgain = 4,       // the decoder wants more input
};

// A media reader: opens a file and hands out packed pictures at a chosen size
// and interleaved audio at a chosen sample format. Times are seconds of the
// clip, starting at 0. The virtual operations keep their order; the stubs of
// this base class answer -1 (or nothing) for what a subclass leaves out.
//
// The buffers of the read calls: `data` receives the bytes and `*size` holds
// its capacity on entry and the bytes written on return.
class FFmpegDecoder {
public:
    virtual ~FFmpegDecoder();

    // Opens the file; 0 or -1.
    virtual int Init();
    // Closes it; the object may be opened again with Init.
    virtual void Release();
    // Moves to the key frame at or before `time`.
    virtual int Seek(double time);
    virtual int SeekAudio(double time);
    virtual int SeekVideo(double time);
    virtual int SeekAudioTo(double time);
    virtual int Reserved0();
    // The next frame of either kind; `kind` gets a FrameKind.
    virtual int NextFrame(uint8_t* data, int* size, int* kind, double* time);
    virtual int GetMediaInfo(MediaInfo* info);
    // The next block of audio; `samples` gets the samples per channel.
    virtual int NextAudio(double time, uint8_t* data, int* size, int* samples, double* outTime);
    virtual int Reserved1();
    // The picture for `time`; a negative time asks for the next picture.
    virtual int NextVideo(double time, uint8_t* data, int* size, int* kind, double* outTime);
    virtual int Reserved2();
    virtual int Reserved3();
    // Decoder threads; values below 1 leave FFmpeg's choice.
    virtual void SetThreadCount(int count);
    // "frame" or "slice"; anything else leaves FFmpeg's choice.
    virtual void SetThreadType(const char* type);
    virtual int Reserved4();
    virtual int Reserved5();
    virtual int Reserved6();
    // Bytes of one picture as handed out.
    virtual int GetFrameBufferSize();
    virtual int GetOutputWidth();
    virtual int GetOutputHeight();
    // The AVSampleFormat of the audio handed out (AV_SAMPLE_FMT_FLT by default).
    virtual void SetAudioSampleFormat(int format);
    // Converts audio even when its format already matches.
    virtual void SetForceResample(bool force);
    // Allows scaling pictures down into the limits below.
    virtual void SetScaleEnabled(bool enabled);
    virtual void SetMaxWidth(int width);
    virtual void SetMaxHeight(int height);
    virtual int Reserved7();
    // Asks for hardware decoding of the video at the next open.
    virtual void SetUseHardware(bool use);
    // Logs the size of every group of pictures; a debugging aid.
    virtual int DumpGop();
    // Builds the key-frame index; 0 when one stands.
    virtual int LoadKeyInfo();

protected:
    // Hooks around a reopen, for subclasses that hold state of their own.
    virtual void _OnPrepareReopen();
    virtual void _OnReopen();
};

}  // namespace codec
