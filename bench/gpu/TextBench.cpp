// What a text clip costs: a 20-character title built cold (every glyph
// tesselated) and from the glyph cache (a new string of known characters),
// and composed frames with ten text clips, flat or extruded; one title
// playing its animation frame after frame.
#include <benchmark/benchmark.h>

#include <memory>
#include <string>
#include <vector>

#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNFrame.h"
#include "engine/MVNOgreContextBase.h"
#include "engine/MVNOgreManager.h"
#include "text/MVNProducerText.h"

using namespace Morvane;

namespace MorvaneBench {

namespace {
std::unique_ptr<MVNProducerText> makeTitle(int zOrder, bool three, const std::string& text) {
    auto clip = std::make_unique<MVNProducerText>(MVNOgreManager::getSingleton()->getProfile(), zOrder, three, "", "",
                                                  false);
    clip->setString("textString", text);
    clip->setInt32("textSize", 48);
    if (clip->init() != 0) return nullptr;
    clip->setBoolean("_textNeedReBuild", true);
    return clip;
}
}  // namespace

// mode 0: cold (a size change empties the glyph cache), 1: a new string
// from the cache.
void buildTitle(benchmark::State& state, int mode) {
    const std::string a = "Morvane titles 2026!", b = "titles 2026! Morvane";
    std::unique_ptr<MVNProducerText> clip = makeTitle(5, false, a);
    if (!clip) {
        state.SkipWithError("the text clip did not start");
        return;
    }
    bool flip = false;
    for (auto _ : state) {
        flip = !flip;
        if (mode == 0) clip->setInt32("textSize", flip ? 49 : 48);
        else clip->setString("textString", flip ? b : a);
    }
    clip->release();
}

// Frames with ten text clips shown and read back. `multisampledTracks`
// false: the extruded clips' track textures are made with one sample a
// pixel (anti-aliasing is off while they are made), for the cost of their
// multisampling.
void composeTitles(benchmark::State& state, bool three, bool multisampledTracks) {
    MVNOgreManager* manager = MVNOgreManager::getSingleton();
    const bool antiAliasing = manager->isAntiAliasing();
    if (!multisampledTracks) manager->setAntiAliasing(false);
    std::vector<std::unique_ptr<MVNProducerText>> clips;
    for (int i = 0; i < 10; ++i) {
        clips.push_back(makeTitle(10 + i, three, "Title number " + std::to_string(i)));
        if (!clips.back()) {
            manager->setAntiAliasing(antiAliasing);
            state.SkipWithError("a text clip did not start");
            return;
        }
        clips.back()->setGeometry(MVNRect(0, static_cast<float>(i * 90), 1920, 90));
    }
    manager->setAntiAliasing(antiAliasing);
    for (auto _ : state) {
        for (auto& clip : clips) {
            MVNFrame* frame = nullptr;
            if (clip->getImage(0, &frame) == 0) MVNFrame::pushBackPool(frame);
        }
        MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
        if (image == nullptr) {
            state.SkipWithError("getRenderImage gave nothing");
            break;
        }
        MVNByteBufferPool::sRelease(image);
    }
    for (auto& clip : clips) clip->release();
}

// Frames of one 1080p title playing "textAnimationType" `type` over a
// 250-frame clip, each frame drawn and read back; type 0 is the still title
// beside which the others are read.
void animateTitle(benchmark::State& state, int type) {
    std::unique_ptr<MVNProducerText> clip = makeTitle(5, false, "Animated title");
    if (!clip) {
        state.SkipWithError("the text clip did not start");
        return;
    }
    clip->setInt32("out", 249);
    clip->setInt32("textSize", 120);
    clip->setInt32("textAnimationType", type);
    int position = 0;
    for (auto _ : state) {
        MVNFrame* frame = nullptr;
        if (clip->getImage(position, &frame) == 0) MVNFrame::pushBackPool(frame);
        position = (position + 1) % 250;
        MVNByteBuffer* image = MVNOgreManager::getSingleton()->getRenderImage();
        if (image == nullptr) {
            state.SkipWithError("getRenderImage gave nothing");
            break;
        }
        MVNByteBufferPool::sRelease(image);
    }
    clip->release();
}

}  // namespace MorvaneBench
