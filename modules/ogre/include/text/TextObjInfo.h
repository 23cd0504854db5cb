#pragma once

namespace Morvane {

// The result of laying a text out, in world units (profile pixels), and the
// box it was laid out in.
struct TextObjInfo {
    float actualMaxWidth = 0.0f;   // widest row, or all columns
    float actualMaxHeight = 0.0f;  // the whole block
    float maxAdvance = 0.0f;       // largest glyph advance with its spacing
    float rowHeight = 0.0f;
    float canvasWidth = 0.0f;      // the text box
    float canvasHeight = 0.0f;
};

}  // namespace Morvane
