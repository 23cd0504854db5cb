#pragma once
#include <string>

#include "core/MVNPoint.h"

namespace Morvane {

// A rectangle of four floats. Rectangles grow upward from their bottom edge,
// so bottom() is y. String form "[x:y wxh]".
struct MVNRect {
    float x = 0;
    float y = 0;
    float width = 0;
    float height = 0;

    MVNRect() = default;
    MVNRect(float px, float py, float w, float h) : x(px), y(py), width(w), height(h) {}

    void setRect(float px, float py, float w, float h) { x = px; y = py; width = w; height = h; }
    float getMinX() const { return x; }
    float getMaxX() const { return x + width; }
    float getMidX() const { return x + width / 2; }
    float getMinY() const { return y; }
    float getMaxY() const { return y + height; }
    float getMidY() const { return y + height / 2; }
    float bottom() const { return y; }
    MVNPoint center() const { return {getMidX(), getMidY()}; }

    // Inclusive on all sides; touching rectangles intersect.
    bool containsPoint(const MVNPoint& p) const;
    bool containsPoint(float px, float py) const;
    bool containsRect(const MVNRect& r) const;
    bool intersectsRect(const MVNRect& r) const;
    bool equals(const MVNRect& r) const;  // each number within FLT_EPSILON
    bool isEmpty() const;                 // equals the all-zero rectangle

    // To -1..1 of a W x H area (a side of 0 counts as 1).
    MVNRect absToRel(float W, float H) const;
    // Origin moved to the centre of a W x H area.
    MVNRect profileToWorld(float W, float H) const;
    // From a bottom-left origin to a top-left one in an area H high.
    MVNRect leftBottomToLeftTop(float W, float H) const;

    std::string toString() const;
    bool fromString(const std::string& s);
    static MVNRect strToRect(const std::string& s);
};

}  // namespace Morvane
