#include "text/fonts/FTVectoriser.h"

#include <GL/glu.h>

#include <cmath>
#include <deque>

#include FT_OUTLINE_H

namespace {

// Flattening of curves: enough segments that a 300-pixel glyph shows no
// facets, few enough that small text stays cheap.
int curveSteps(double x0, double y0, double x1, double y1, double x2, double y2) {
    double length = std::hypot(x1 - x0, y1 - y0) + std::hypot(x2 - x1, y2 - y1);
    int steps = static_cast<int>(length / 64.0 / 3.0);
    return steps < 2 ? 2 : (steps > 24 ? 24 : steps);
}

struct Decomposer {
    std::vector<FTContour>* contours;
    double x = 0, y = 0;
};

int moveTo(const FT_Vector* to, void* user) {
    Decomposer* d = static_cast<Decomposer*>(user);
    d->contours->emplace_back();
    d->x = to->x;
    d->y = to->y;
    d->contours->back().AddPoint(d->x, d->y);
    return 0;
}

int lineTo(const FT_Vector* to, void* user) {
    Decomposer* d = static_cast<Decomposer*>(user);
    d->x = to->x;
    d->y = to->y;
    d->contours->back().AddPoint(d->x, d->y);
    return 0;
}

int conicTo(const FT_Vector* control, const FT_Vector* to, void* user) {
    Decomposer* d = static_cast<Decomposer*>(user);
    double x0 = d->x, y0 = d->y, x1 = control->x, y1 = control->y, x2 = to->x, y2 = to->y;
    int steps = curveSteps(x0, y0, x1, y1, x2, y2);
    for (int i = 1; i <= steps; ++i) {
        double t = static_cast<double>(i) / steps, u = 1.0 - t;
        d->contours->back().AddPoint(u * u * x0 + 2 * u * t * x1 + t * t * x2, u * u * y0 + 2 * u * t * y1 + t * t * y2);
    }
    d->x = x2;
    d->y = y2;
    return 0;
}

int cubicTo(const FT_Vector* c1, const FT_Vector* c2, const FT_Vector* to, void* user) {
    Decomposer* d = static_cast<Decomposer*>(user);
    double x0 = d->x, y0 = d->y;
    int steps = curveSteps(x0, y0, c1->x, c1->y, to->x, to->y) + 2;
    for (int i = 1; i <= steps; ++i) {
        double t = static_cast<double>(i) / steps, u = 1.0 - t;
        double a = u * u * u, b = 3 * u * u * t, c = 3 * u * t * t, e = t * t * t;
        d->contours->back().AddPoint(a * x0 + b * c1->x + c * c2->x + e * to->x,
                                     a * y0 + b * c1->y + c * c2->y + e * to->y);
    }
    d->x = to->x;
    d->y = to->y;
    return 0;
}

// What the tesselator's callbacks write into.
struct TessState {
    std::vector<FTVectoriser::Tesselation>* mesh;
    std::deque<FTVectoriser::Vertex> combined;  // stable addresses for GLU
    bool failed = false;
};

void GLAPIENTRY tessBegin(GLenum type, void* data) {
    static_cast<TessState*>(data)->mesh->push_back({static_cast<unsigned int>(type), {}});
}

void GLAPIENTRY tessVertex(void* vertex, void* data) {
    const GLdouble* v = static_cast<const GLdouble*>(vertex);
    static_cast<TessState*>(data)->mesh->back().vertices.push_back({v[0], v[1]});
}

void GLAPIENTRY tessCombine(GLdouble coords[3], void*[4], GLfloat[4], void** out, void* data) {
    TessState* state = static_cast<TessState*>(data);
    state->combined.push_back({coords[0], coords[1]});
    // Vertex is two doubles; GLU reads x and y from the front of it.
    *out = &state->combined.back();
}

void GLAPIENTRY tessEnd(void*) {}

void GLAPIENTRY tessError(GLenum, void* data) { static_cast<TessState*>(data)->failed = true; }

}  // namespace

FTVectoriser::FTVectoriser(const FT_Outline& outline) {
    FT_Outline_Funcs funcs{};
    funcs.move_to = moveTo;
    funcs.line_to = lineTo;
    funcs.conic_to = conicTo;
    funcs.cubic_to = cubicTo;
    Decomposer d{&contours};
    FT_Outline copy = outline;
    FT_Outline_Decompose(&copy, &funcs, &d);
    // The closing point of a contour repeats its first: drop it.
    for (FTContour& c : contours) {
        if (c.PointCount() > 1) {
            const FTContour::Point& a = c.GetPoint(0);
            const FTContour::Point& b = c.GetPoint(c.PointCount() - 1);
            if (a.x == b.x && a.y == b.y) {
                FTContour trimmed;
                for (size_t i = 0; i + 1 < c.PointCount(); ++i) trimmed.AddPoint(c.GetPoint(i).x, c.GetPoint(i).y);
                c = trimmed;
            }
        }
    }
    evenOdd = (outline.flags & FT_OUTLINE_EVEN_ODD_FILL) != 0;
    clockwiseFill = FT_Outline_Get_Orientation(&copy) != FT_ORIENTATION_POSTSCRIPT;
}

size_t FTVectoriser::PointCount() const {
    size_t n = 0;
    for (const FTContour& c : contours) n += c.PointCount();
    return n;
}

void FTVectoriser::MakeMesh(double zNormal, int, float) {
    mesh.clear();
    meshFailed = false;
    GLUtesselator* tess = gluNewTess();
    if (tess == nullptr) {
        meshFailed = true;
        return;
    }
    TessState state{&mesh};
    gluTessCallback(tess, GLU_TESS_BEGIN_DATA, reinterpret_cast<void(GLAPIENTRY*)()>(tessBegin));
    gluTessCallback(tess, GLU_TESS_VERTEX_DATA, reinterpret_cast<void(GLAPIENTRY*)()>(tessVertex));
    gluTessCallback(tess, GLU_TESS_COMBINE_DATA, reinterpret_cast<void(GLAPIENTRY*)()>(tessCombine));
    gluTessCallback(tess, GLU_TESS_END_DATA, reinterpret_cast<void(GLAPIENTRY*)()>(tessEnd));
    gluTessCallback(tess, GLU_TESS_ERROR_DATA, reinterpret_cast<void(GLAPIENTRY*)()>(tessError));
    // Non-zero winding fills both TrueType and PostScript outlines, and the
    // overlapping borders that the stroker makes.
    gluTessProperty(tess, GLU_TESS_WINDING_RULE, evenOdd ? GLU_TESS_WINDING_ODD : GLU_TESS_WINDING_NONZERO);
    gluTessProperty(tess, GLU_TESS_TOLERANCE, 0);
    gluTessNormal(tess, 0.0, 0.0, zNormal);
    // GLU keeps pointers to the coordinates until the polygon ends.
    std::vector<std::vector<GLdouble>> coords(contours.size());
    gluTessBeginPolygon(tess, &state);
    for (size_t c = 0; c < contours.size(); ++c) {
        const FTContour& contour = contours[c];
        if (contour.PointCount() < 3) continue;
        coords[c].resize(contour.PointCount() * 3);
        gluTessBeginContour(tess);
        for (size_t i = 0; i < contour.PointCount(); ++i) {
            GLdouble* v = &coords[c][i * 3];
            v[0] = contour.GetPoint(i).x;
            v[1] = contour.GetPoint(i).y;
            v[2] = 0.0;
            gluTessVertex(tess, v, v);
        }
        gluTessEndContour(tess);
    }
    gluTessEndPolygon(tess);
    gluDeleteTess(tess);
    meshFailed = state.failed;
}
