// What a 1080p video clip costs the processor per position: a whole
// picture (decode and conversion to B,G,R,A, sequential positions of a
// 25 fps file in a 25 fps timeline) and the conversion alone (the same
// position again: the decoded picture is kept). The upload of the
// converted picture is mvn-bench-gpu's Upload/1920x1080. The clip is made
// with the ffmpeg command into the build tree once.
#include <benchmark/benchmark.h>

#include <cstdlib>
#include <string>

#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"
#include "services/MVNProperties.h"
#include "timeline/MVNModule.h"

using namespace Morvane;

namespace {

const int kPositions = 250;

// The clip, made and opened once; null when the module or ffmpeg is missing.
MVNProducer* clip() {
    static MVNProducer* producer = [] () -> MVNProducer* {
        const std::string path = std::string(MVN_BENCH_MEDIA_DIR) + "/clip-1920x1080.mp4";
        std::string make = "mkdir -p " MVN_BENCH_MEDIA_DIR " && test -f " + path +
                           " || ffmpeg -v error -nostdin -y -f lavfi -i testsrc2=s=1920x1080:r=25:d=10 "
                           "-c:v libx264 -preset veryfast -crf 20 -g 12 -bf 2 -pix_fmt yuv420p " + path;
        if (std::system(make.c_str()) != 0) return nullptr;
        if (loadModule(findModule("libMVNMedia.so")) != 0) return nullptr;
        MVNProperties p;
        p.setString("service", "codec.video");
        p.setString("resource", path);
        p.setBoolean("hardware", false);
        return getProducerById(createProducer(MVNProfile(1920, 1080, 25, 1), p));
    }();
    return producer;
}

void BM_VideoClipPicture(benchmark::State& state) {
    MVNProducer* p = clip();
    if (p == nullptr) {
        state.SkipWithError("no clip (ffmpeg or libMVNMedia.so missing)");
        return;
    }
    int position = 0;
    for (auto _ : state) {
        MVNFrame* frame = nullptr;
        p->getImage(position, &frame);
        MVNFrame::pushBackPool(frame);
        position = (position + 1) % kPositions;
    }
}
BENCHMARK(BM_VideoClipPicture)->Name("VideoClip1080/decode_and_convert")->Unit(benchmark::kMillisecond)->Iterations(200);

void BM_VideoClipConversion(benchmark::State& state) {
    MVNProducer* p = clip();
    if (p == nullptr) {
        state.SkipWithError("no clip (ffmpeg or libMVNMedia.so missing)");
        return;
    }
    for (auto _ : state) {
        MVNFrame* frame = nullptr;
        p->getImage(100, &frame);
        MVNFrame::pushBackPool(frame);
    }
}
BENCHMARK(BM_VideoClipConversion)->Name("VideoClip1080/convert_only")->Unit(benchmark::kMillisecond);

}  // namespace
