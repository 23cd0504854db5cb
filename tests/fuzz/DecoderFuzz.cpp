// Media files from anywhere, read from memory: opening either fails with a
// message or gives a file whose pictures and sound can be read to the end
// (a bounded number of reads) and sought in, without a crash.
#include <cstddef>
#include <algorithm>
#include <cstdint>
#include <vector>

#include "FFmpegDecoderImpl.h"
#include "FuzzSupport.h"
#include "OutputSize.h"

extern "C" {
#include <libavutil/log.h>
}

using MorvaneFuzz::check;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    MorvaneFuzz::quietLog();
    av_log_set_level(AV_LOG_QUIET);
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    codec::FFmpegDecoderImpl decoder("fuzz.bin");
    decoder.SetMemoryInput(data, size);
    decoder.SetThreadCount(1);
    // Small pictures: the fuzzer's files may claim any size.
    decoder.SetScaleEnabled(true);
    decoder.SetMaxWidth(64);
    decoder.SetMaxHeight(64);
    if (decoder.Init() != 0) return 0;

    codec::MediaInfo info;
    decoder.GetMediaInfo(&info);
    // Non-square pixels may stretch the shorter side past the limits, but
    // never past what a GPU takes.
    const int width = decoder.GetOutputWidth();
    const int height = decoder.GetOutputHeight();
    check(width >= 0 && height >= 0 && width <= codec::OutputSize::kMaxSide && height <= codec::OutputSize::kMaxSide &&
              std::min(width, height) <= 64,
          "the picture is at most the widest texture a side, its shorter side within the limits");
    const int bytes = decoder.GetFrameBufferSize();
    check(bytes >= 0 && bytes <= static_cast<int64_t>(width) * height * 16, "the picture buffer fits the picture");
    std::vector<uint8_t> buffer(static_cast<size_t>(bytes) + 1024 * 1024);
    for (int pass = 0; pass < 2; ++pass) {
        for (int i = 0; i < 64; ++i) {
            int room = static_cast<int>(buffer.size());
            int kind = 0;
            double time = 0;
            int r = decoder.NextFrame(buffer.data(), &room, &kind, &time);
            if (r == codec::kReadEnd || r == codec::kReadError || r == codec::kReadNotInit) break;
            check(room >= 0 && room <= static_cast<int>(buffer.size()), "a read stays in its buffer");
        }
        decoder.Seek(0);
    }
    decoder.Release();
    return 0;
}
