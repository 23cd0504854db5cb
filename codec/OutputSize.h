#pragma once

namespace codec {

// The size of the pictures a decoder hands out: the source corrected for
// non-square pixels, or fitted into the client's limits.
struct OutputSize {
    int width = 0;
    int height = 0;
    float dar = 1.0f;  // display aspect ratio of the source

    // The longest side an aspect correction may give (the widest texture
    // GPUs take); a sample aspect ratio that asks for more is ignored.
    static constexpr int kMaxSide = 16384;

    // w, h: source size; sarNum/sarDen: sample aspect ratio, non-positive
    // parts mean square pixels; maxWidth/maxHeight: limits, used only when
    // both are positive and `scale` is set.
    static OutputSize Compute(int w, int h, int sarNum, int sarDen, int maxWidth, int maxHeight, bool scale);
};

}  // namespace codec
