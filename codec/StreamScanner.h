#pragma once
#include <memory>

#include "KeyInfo.h"

namespace codec {

class FFmpegDecoderImpl;

// The reads over a decoder's packets that tell what the file states badly or
// not at all: the first video timestamp, the key-frame interval, the key-frame
// index, the duration. Each scan leaves the decoder rewound to the start.
class StreamScanner {
public:
    explicit StreamScanner(FFmpegDecoderImpl& decoder);

    // The first video pts and, from it, the first audio pts; notes a
    // variable frame rate in the packet durations.
    void FindFirstPTS();
    // The distance between key frames, checked against the demuxer's index;
    // notes picture steps shorter than one frame.
    void FindKeyint();
    // The index from the demuxer's own entries; null when it has none.
    std::unique_ptr<KeyInfo> LoadKeyInfoByIndexEntries();
    // The index by reading every packet; null when no key frame is found.
    std::unique_ptr<KeyInfo> LoadKeyInfoByTraverse();
    // Seconds of the clip from its last timestamps; 0 or -1.
    int EstimateVideoDuration(double* duration);
    int EstimateAudioDuration(double* duration);
    // Logs the count and kilobytes of each group of pictures.
    int DumpGop();

private:
    // Places the reader near the end of a file whose duration is `guess`
    // seconds (0: unknown) on `stream`; false when it stays at the start.
    // Reads to the end of the file from where it stands and rewinds: the
    // latest end (timestamp plus duration) of `stream`'s packets, only those
    // with a timestamp when `stampedOnly`; AV_NOPTS_VALUE when there was
    // none. `interrupted` is logged when the decoder is closed meanwhile.
    int64_t _EndOfStream(int stream, bool stampedOnly, const char* interrupted);
    bool _SeekNearEnd(int stream, double guess);

    FFmpegDecoderImpl& d;
};

}  // namespace codec
