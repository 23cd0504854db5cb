// The string forms a user types into properties and project files:
// rectangles "[x:y wxh]", points, sizes, colours "#rrggbbaa", a LUT's colour
// line, profile names and "WxH@FPS", and the property bag's conversions
// from text. None may crash; what parses must print back to itself.
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "core/MVNColor4B.h"
#include "core/MVNLut3dColor3F.h"
#include "core/MVNPoint.h"
#include "core/MVNProfile.h"
#include "core/MVNRect.h"
#include "core/MVNSize.h"
#include "services/MVNProperties.h"

using namespace Morvane;
using MorvaneFuzz::check;

namespace {

// Printing keeps six decimals: a value read back is within that of itself.
bool near(float a, float b) {
    if (std::isnan(a) || std::isnan(b)) return std::isnan(a) && std::isnan(b);
    if (std::isinf(a) || std::isinf(b)) return a == b;
    return std::fabs(a - b) <= 1e-6f + std::fabs(a) * 1e-6f;
}

}  // namespace

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    MorvaneFuzz::quietLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);

    MVNColor4B colour;
    if (colour.fromString(text)) {
        MVNColor4B back;
        check(back.fromString(colour.toString()) && back == colour, "a colour prints back to itself");
    }

    MVNRect rect;
    if (rect.fromString(text)) {
        MVNRect back;
        check(back.fromString(rect.toString()), "a rectangle's text reads back");
        check(near(back.x, rect.x) && near(back.y, rect.y) && near(back.width, rect.width) &&
                  near(back.height, rect.height),
              "a rectangle prints back to itself");
    }
    MVNPoint point;
    point.fromString(text);
    MVNSize sizeValue;
    sizeValue.fromString(text);
    MVNLut3dColor3F lutColour;
    lutColour.fromString(text);

    MVNProfile profile(text);
    if (profile.isValid()) {
        check(profile.width() > 0 && profile.height() > 0, "a valid profile has a picture");
    }

    MVNProperties bag;
    bag.setString("v", text);
    bag.getInt32("v", 0);
    bag.getDouble("v", 0);
    bag.getBoolean("v", false);
    bag.getColor("v", MVNColor4B());
    bag.getRect("v", MVNRect());
    bag.getWstring("v", L"");
    return 0;
}
