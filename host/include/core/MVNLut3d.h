#pragma once
#include <cstdint>
#include <iosfwd>
#include <string>
#include <vector>

#include "core/MVNLut3dColor3F.h"

namespace Morvane {

// A 3D colour lookup table read from a .cube file, and its picture for the
// GPU: the N slices of the N x N x N cube side by side in one N*N x N
// image, three bytes a pixel, rows packed. Blue chooses the slice, red the
// column within it, green the row: the pixel of (r, g, b) is
// (b * N + r, g). The bytes of a pixel are in the order of a packed 24-bit
// 0xRRGGBB word in memory (blue, green, red on little-endian machines), as
// the engine's native R8G8B8 format reads them.
//
// Input outside DOMAIN_MIN..DOMAIN_MAX is clamped; a domain other than 0..1
// is resampled (trilinear) so that the picture always covers 0..1. Output
// values are clamped to 0..1 in the picture.
class MVNLut3d {
public:
    MVNLut3d() = default;
    ~MVNLut3d() = default;

    // Reads a .cube file: TITLE, # comments, blank lines, LUT_3D_SIZE N
    // (2..256), DOMAIN_MIN / DOMAIN_MAX r g b or LUT_3D_INPUT_RANGE min max,
    // then N^3 colour lines with red changing fastest. 0 on success; -1 with
    // the reason logged (tag "MVNLut3d") and kept in lastError(), the table
    // then empty.
    int loadFromFile(const std::string& path);
    // The same from text already in memory; `name` stands for the file in
    // messages.
    int loadFromString(const std::string& text, const std::string& name);

    // The packed picture, null until a table is loaded.
    unsigned char* data() { return mImage.empty() ? nullptr : mImage.data(); }
    // N, 0 until a table is loaded.
    int lutSize() const { return mSize; }
    // The colours as the file lists them, red fastest.
    const std::vector<MVNLut3dColor3F>& colors() const { return mColors; }
    const MVNLut3dColor3F& domainMin() const { return mDomainMin; }
    const MVNLut3dColor3F& domainMax() const { return mDomainMax; }
    const std::string& lastError() const { return mLastError; }

private:
    void reset();
    int load(std::istream& in, const std::string& name);
    int fail(const char* format, ...) __attribute__((format(printf, 2, 3)));
    void buildImage();
    MVNLut3dColor3F sample(float r, float g, float b) const;

    int mSize = 0;
    std::vector<MVNLut3dColor3F> mColors;
    MVNLut3dColor3F mDomainMin{0, 0, 0};
    MVNLut3dColor3F mDomainMax{1, 1, 1};
    std::vector<uint8_t> mImage;
    std::string mLastError;
};

}  // namespace Morvane
