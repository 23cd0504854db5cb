#include "core/MVNAudioBlock.h"

#include <algorithm>
#include <cstring>

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"

namespace Morvane {

int64_t MVNAudioBlock::firstSample(const MVNProfile& profile, int position) {
    int64_t num = profile.fpsNum() > 0 ? profile.fpsNum() : 25;
    int64_t den = profile.fpsDen() > 0 ? profile.fpsDen() : 1;
    // Whole samples, rounded down: exact for every rate the profiles name.
    return static_cast<int64_t>(position) * kRate * den / num;
}

int MVNAudioBlock::samplesOf(const MVNProfile& profile, int position) {
    return static_cast<int>(firstSample(profile, position + 1) - firstSample(profile, position));
}

MVNFrame* MVNAudioBlock::pullSilence(int samples) {
    int count = std::max(0, samples);
    int bytes = count * kChannels * static_cast<int>(sizeof(float));
    MVNFrame* frame = MVNFrame::pullFromPool(2, std::max(bytes, 1));
    if (frame == nullptr) return nullptr;
    if (frame->buffer() != nullptr && frame->buffer()->ptr() != nullptr) std::memset(frame->buffer()->ptr(), 0, bytes);
    frame->setSize(bytes);
    frame->setSampleFormat(MVN_SAMPLE_FLT);
    frame->setFrequency(kRate);
    frame->setChannels(kChannels);
    frame->setSamples(count);
    return frame;
}

float* MVNAudioBlock::samples(MVNFrame* frame) {
    if (frame == nullptr || frame->buffer() == nullptr || frame->sampleFormat() != MVN_SAMPLE_FLT) return nullptr;
    return reinterpret_cast<float*>(frame->buffer()->ptr());
}

void MVNAudioBlock::mixInto(MVNFrame* into, MVNFrame* from, float gain) {
    mixRamp(into, from, gain, gain);
}

void MVNAudioBlock::mixRamp(MVNFrame* into, MVNFrame* from, float gainFirst, float gainEnd) {
    float* dst = samples(into);
    const float* src = samples(from);
    if (dst == nullptr || src == nullptr) return;
    // Blocks of a clip and of its timeline may differ by a sample where
    // the frame rate doesn't divide the sample rate: the last sample stands
    // in for the missing one.
    int n = into->samples();
    int last = from->samples() - 1;
    if (last < 0) return;
    int total = std::max(n, 1);
    for (int i = 0; i < n; ++i) {
        float gain = gainFirst + (gainEnd - gainFirst) * static_cast<float>(i) / static_cast<float>(total);
        int k = std::min(i, last);
        dst[2 * i] += gain * src[2 * k];
        dst[2 * i + 1] += gain * src[2 * k + 1];
    }
}

}  // namespace Morvane
