#pragma once
#include <cstdint>

#include "core/MVNProfile.h"

namespace Morvane {

class MVNFrame;

// The sound of one timeline position: 48 kHz, two channels, interleaved
// float samples. Position N covers the samples from firstSample(N) up to
// firstSample(N + 1), counted from position 0, so that blocks of successive
// positions join without a gap and the sound of any position starts where
// its picture starts, whatever the frame rate.
struct MVNAudioBlock {
    static constexpr int kRate = 48000;
    static constexpr int kChannels = 2;

    // The first sample of `position` at the profile's frame rate.
    static int64_t firstSample(const MVNProfile& profile, int position);
    // Samples (per channel) of `position`.
    static int samplesOf(const MVNProfile& profile, int position);

    // A pooled audio frame of `samples` samples of silence; null when the
    // pools are exhausted. The caller gives it back with pushBackPool.
    static MVNFrame* pullSilence(int samples);
    // The interleaved samples of an audio frame; null when it holds none.
    static float* samples(MVNFrame* frame);

    // Adds `gain` times `from` into `into`; a `from` shorter by a sample
    // (a clip's block beside its timeline's) repeats its last one.
    static void mixInto(MVNFrame* into, MVNFrame* from, float gain);
    // Adds `from` into `into` with a gain that runs straight from `gainFirst`
    // at the first sample to `gainEnd` just past the last: a fade without
    // steps inside the block.
    static void mixRamp(MVNFrame* into, MVNFrame* from, float gainFirst, float gainEnd);
};

}  // namespace Morvane
