#pragma once
#include <string>

namespace Morvane {

// A point in profile or world units. String form "[x:y]".
struct MVNPoint {
    float x = 0;
    float y = 0;

    MVNPoint() = default;
    MVNPoint(float px, float py) : x(px), y(py) {}

    bool equals(const MVNPoint& other) const;
    float getLength() const;
    float getAngle() const;      // atan2f(y, x)
    MVNPoint normalize() const;  // (1, 0) for the zero point

    std::string toString() const;
    // False for an empty string or one not starting with '['; fields the scan
    // does not find become 0.
    bool fromString(const std::string& s);
    static MVNPoint strToPoint(const std::string& s);

    MVNPoint operator+(const MVNPoint& o) const { return {x + o.x, y + o.y}; }
    MVNPoint operator-(const MVNPoint& o) const { return {x - o.x, y - o.y}; }
    MVNPoint operator-() const { return {-x, -y}; }
    MVNPoint operator*(float f) const { return {x * f, y * f}; }
    MVNPoint operator/(float f) const { return {x / f, y / f}; }
};

}  // namespace Morvane
