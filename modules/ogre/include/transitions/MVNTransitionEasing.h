#pragma once
#include <string>

#include "MVNOgreExport.h"

namespace Morvane {

// Reshapes a transition's progress before the program sees it: "linear",
// "ease-in", "ease-out", "ease-in-out" (the curves of CSS) or
// "cubic-bezier(x1,y1,x2,y2)" with x1 and x2 in 0..1. Ends stay put: 0 gives
// 0 and 1 gives 1.
class MVN_OGRE_API MVNTransitionEasing {
public:
    MVNTransitionEasing() = default;

    // False for a text that names no curve; the easing is then linear.
    bool parse(const std::string& text);
    float apply(float progress) const;
    bool isLinear() const { return linear; }

private:
    // The curve's x and y at parameter t.
    static float bezier(float t, float p1, float p2);

    bool linear = true;
    float x1 = 0, y1 = 0, x2 = 1, y2 = 1;
};

}  // namespace Morvane
