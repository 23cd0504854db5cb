#pragma once
#include <cstdint>
#include <string>

namespace Morvane {

// The picture behind a material: either a texture of its own that pixels
// from memory are copied into, or the name of a texture that exists already
// (a render target of another service). Render thread only.
class MVNOgreMaterialTextureImpl {
public:
    virtual ~MVNOgreMaterialTextureImpl() = default;
    // The engine's name of the texture that the material samples.
    virtual const std::string& getTextureName() = 0;
    // Four bytes a pixel (B, G, R, A), rows packed; `data` need only live for
    // the call. No effect on a texture that only names another one.
    virtual void updateTexture(uint8_t* data, int width, int height) = 0;
};

}  // namespace Morvane
