#pragma once
// Conversions between the three coordinate systems of a composition:
//  - profile: pixels of the output format, origin bottom-left, y up;
//  - screen: pixels of the render window, origin bottom-left, y up;
//  - world: the engine's units, one unit one window pixel at z 0, origin at
//    the window's centre, y up.
// The profile is fitted into the window keeping its aspect and centred, so
// a letterboxed or pillarboxed band is left where the aspects differ. All
// functions agree with each other; a window or profile side of 0 or below
// leaves the input unchanged.
#include "core/MVNPoint.h"
#include "core/MVNRect.h"
#include "core/MVNSize.h"

namespace Morvane {

MVNRect convertGeometryProfileToWorld2(const MVNRect& rect, int profileW, int profileH, int screenW, int screenH);
MVNRect convertGeometryProfileToScreen(const MVNRect& rect, int profileW, int profileH, int screenW, int screenH);
MVNRect convertGeometryScreenToProfile(const MVNRect& rect, int profileW, int profileH, int screenW, int screenH);
MVNPoint convertPointScreenToProfile(const MVNPoint& point, int profileW, int profileH, int screenW, int screenH);
// A font size in profile pixels to window pixels, rounded, at least 1 for a
// positive size.
int convertFontSizeProfileToScreen(int size, int profileW, int profileH, int screenW, int screenH);

// `size` scaled with its aspect kept so that it fits `box` and touches it on
// two sides (up or down). Zero for an empty size or box.
MVNSize adjustSizeFill(const MVNSize& size, const MVNSize& box);
// `size` shrunk with its aspect kept until it fits inside `box` (never
// enlarged), then both sides rounded down to a multiple of `align` (an
// encoder's block size; 1 or less means no rounding), but not below `align`.
MVNSize adjustSizeContainAlign(const MVNSize& size, const MVNSize& box, int align);

}  // namespace Morvane
