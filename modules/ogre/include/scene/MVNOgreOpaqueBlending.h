#pragma once
#include <cstdint>
#include <string>

namespace Ogre {
class Material;
}

namespace Morvane {

// Blending a picture that is opaque everywhere gives the bytes it already
// has, and where the raster is done in software it costs far more than
// drawing the picture plainly. This switches pass 0 of every technique of a
// material (the shader generator copies the first) between alpha blending
// and none, as its picture turns out to be opaque or not: a named texture
// whose format has no alpha, an uploaded picture whose every alpha byte is
// 255. Blending that someone else set on the material is theirs: once seen,
// it is left alone for good.
//
// Render thread only, like the material it works on.
class MVNOgreOpaqueBlending {
public:
    // `material` (not owned, outlives this) blends transparent alpha now.
    void adopt(Ogre::Material* material);
    // A texture known by name: a file's is loaded here rather than at its
    // first draw, so that its format is known; a name that is not a loadable
    // resource counts as having alpha, and its load and error stay with the
    // draw.
    void followTexture(const std::string& textureName);
    // The picture just uploaded, width x height of B, G, R, A bytes.
    void followUpload(const uint8_t* bgra, int width, int height);
    bool isOpaque() const { return opaqueApplied; }

private:
    void _set(bool opaque);

    Ogre::Material* material = nullptr;
    bool owned = false;          // the blending is still the one set here
    bool opaqueApplied = false;  // drawn without blending now
};

}  // namespace Morvane
