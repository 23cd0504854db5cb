#pragma once
#include <vector>

#include <ft2build.h>
#include FT_FREETYPE_H

#include "text/fonts/FTContour.h"

// Turns a FreeType outline into contours and, through GLU's tesselator, into
// triangle pieces (lists, strips and fans as the tesselator hands them out).
class FTVectoriser {
public:
    struct Vertex {
        double x;
        double y;
    };
    // One primitive of the tesselation: GL_TRIANGLES (4), GL_TRIANGLE_STRIP
    // (5) or GL_TRIANGLE_FAN (6).
    struct Tesselation {
        unsigned int type;
        std::vector<Vertex> vertices;
    };

    explicit FTVectoriser(const FT_Outline& outline);

    size_t ContourCount() const { return contours.size(); }
    const FTContour& Contour(size_t i) const { return contours[i]; }
    size_t PointCount() const;
    // True when the outline fills clockwise contours (TrueType's way).
    bool ClockwiseFill() const { return clockwiseFill; }

    // Tesselates the contours, filled by FreeType's own fill rule. zNormal
    // gives the orientation of the result; outsets are made by the stroker
    // before the outline gets here, so outsetSize only travels along.
    void MakeMesh(double zNormal, int outsetType, float outsetSize);
    const std::vector<Tesselation>& Mesh() const { return mesh; }
    // True when the tesselator rejected the contours.
    bool MeshFailed() const { return meshFailed; }

private:
    std::vector<FTContour> contours;
    std::vector<Tesselation> mesh;
    bool evenOdd = false;
    bool clockwiseFill = true;
    bool meshFailed = false;
};
