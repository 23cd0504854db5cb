#pragma once
#include <cstddef>
#include <vector>

// One closed contour of a glyph outline, curves already flattened into
// straight segments. Coordinates are FreeType's 26.6 units.
class FTContour {
public:
    struct Point {
        double x;
        double y;
    };

    void AddPoint(double x, double y);
    size_t PointCount() const { return points.size(); }
    const Point& GetPoint(size_t i) const { return points[i]; }
    const std::vector<Point>& Points() const { return points; }
    // Twice the signed area; positive for a counter-clockwise contour.
    double SignedArea() const;

private:
    std::vector<Point> points;
};
