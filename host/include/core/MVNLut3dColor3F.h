#pragma once
#include <string>

namespace Morvane {

// One colour of a 3D lookup table: red, green and blue as floats, 0 to 1 in
// the usual domain.
class MVNLut3dColor3F {
public:
    MVNLut3dColor3F() = default;
    MVNLut3dColor3F(float pr, float pg, float pb) : r(pr), g(pg), b(pb) {}

    void set(float pr, float pg, float pb) {
        r = pr;
        g = pg;
        b = pb;
    }

    // Reads a colour line of a table: exactly three numbers apart by spaces
    // or tabs, read the same whatever the C locale. An empty line gives
    // false and logs nothing; any other line that isn't three finite numbers
    // logs "error LUT3D color format", gives false and leaves the colour.
    bool fromString(const std::string& line);

    float r = 0;
    float g = 0;
    float b = 0;
};

}  // namespace Morvane
