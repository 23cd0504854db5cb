#include "text/fonts/FTContour.h"

void FTContour::AddPoint(double x, double y) {
    // A repeated point would give the tesselator a zero-length edge.
    if (!points.empty() && points.back().x == x && points.back().y == y) return;
    points.push_back({x, y});
}

double FTContour::SignedArea() const {
    double area = 0.0;
    for (size_t i = 0, n = points.size(); i < n; ++i) {
        const Point& a = points[i];
        const Point& b = points[(i + 1) % n];
        area += a.x * b.y - b.x * a.y;
    }
    return area;
}
