#include "transitions/MVNTransitionEasing.h"

#include <cmath>
#include <cstdio>

namespace Morvane {

bool MVNTransitionEasing::parse(const std::string& text) {
    struct Named {
        const char* name;
        float x1, y1, x2, y2;
    };
    static const Named kNamed[] = {
        {"ease-in", 0.42f, 0.0f, 1.0f, 1.0f},
        {"ease-out", 0.0f, 0.0f, 0.58f, 1.0f},
        {"ease-in-out", 0.42f, 0.0f, 0.58f, 1.0f},
    };
    linear = true;
    if (text.empty() || text == "linear") return true;
    for (const Named& n : kNamed) {
        if (text == n.name) {
            x1 = n.x1, y1 = n.y1, x2 = n.x2, y2 = n.y2;
            linear = false;
            return true;
        }
    }
    float a, b, c, d;
    char close = 0;
    int used = 0;
    if (std::sscanf(text.c_str(), " cubic-bezier ( %f , %f , %f , %f %c%n", &a, &b, &c, &d, &close, &used) == 5 &&
        close == ')' && text.find_first_not_of(' ', used) == std::string::npos && a >= 0 && a <= 1 && c >= 0 &&
        c <= 1 && std::isfinite(b) && std::isfinite(d)) {
        x1 = a, y1 = b, x2 = c, y2 = d;
        linear = false;
        return true;
    }
    return false;
}

float MVNTransitionEasing::bezier(float t, float p1, float p2) {
    float u = 1.0f - t;
    return 3.0f * u * u * t * p1 + 3.0f * u * t * t * p2 + t * t * t;
}

float MVNTransitionEasing::apply(float progress) const {
    if (linear || progress <= 0.0f || progress >= 1.0f) return progress;
    // x(t) rises from 0 to 1 for x1, x2 in 0..1: find t for the progress by
    // halving, then read y there.
    float lo = 0.0f, hi = 1.0f, t = progress;
    for (int i = 0; i < 40; ++i) {
        t = 0.5f * (lo + hi);
        if (bezier(t, x1, x2) < progress) {
            lo = t;
        } else {
            hi = t;
        }
    }
    return bezier(t, y1, y2);
}

}  // namespace Morvane
