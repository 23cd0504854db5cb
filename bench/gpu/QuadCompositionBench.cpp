// Frames a second of four full-frame picture clips in the shared scene, as a
// host drives them: each frame uploads the four pictures, puts their
// geometry again and reads the composed picture back. Three pictures are
// opaque, the top one half transparent (blended). mvn-bench-gpu registers it
// for each of its sizes.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "scene/MVNOgreRenderTexture.h"

using namespace Morvane;

namespace MorvaneBench {

// In the running engine; `upload`: four uploads and four geometries a frame,
// else the same scene drawn and read back with no new pictures.
void composeFrames(benchmark::State& state, bool upload) {
    MVNOgreContextBase* context = MVNOgreManager::getSingleton()->getOgreContext();
    if (context == nullptr) {
        state.SkipWithError("no engine");
        return;
    }
    const int w = context->getWidth();
    const int h = context->getHeight();
    const MVNRect full(0, 0, static_cast<float>(w), static_cast<float>(h));
    std::vector<std::unique_ptr<MVNOgreRenderTexture>> clips;
    std::vector<std::vector<uint8_t>> pictures;
    for (int i = 0; i < 4; ++i) {
        pictures.emplace_back(static_cast<size_t>(w) * h * 4, static_cast<uint8_t>(60 * i));
        for (size_t p = 3; p < pictures.back().size(); p += 4) pictures.back()[p] = i == 3 ? 128 : 255;
        clips.push_back(std::make_unique<MVNOgreRenderTexture>("", w, h, w, h, i, ""));
        clips.back()->setGeometry(full);
        clips.back()->updateTexture(pictures.back().data(), w, h);
    }
    for (auto _ : state) {
        if (upload) {
            for (int i = 0; i < 4; ++i) {
                clips[i]->updateTexture(pictures[i].data(), w, h);
                clips[i]->setGeometry(full);
            }
        }
        MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
        if (image == nullptr) {
            state.SkipWithError("getRenderImage gave nothing");
            break;
        }
        MVNByteBufferPool::sRelease(image);
    }
    state.SetLabel(std::to_string(w) + "x" + std::to_string(h));
    state.counters["fps"] = benchmark::Counter(static_cast<double>(state.iterations()), benchmark::Counter::kIsRate);
}

}  // namespace MorvaneBench
