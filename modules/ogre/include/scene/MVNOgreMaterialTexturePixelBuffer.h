#pragma once
#include "MVNOgreExport.h"
#include "MVNOgreForward.h"
#include "scene/MVNOgreMaterialTextureImpl.h"

namespace Morvane {

class MVNByteBuffer;

// A dynamic, write-only texture of its own that each frame's pixels are
// copied into. A frame of another size than the texture is scaled to it
// through a buffer made at the first mismatch and kept for the texture's
// life, so the frame path allocates nothing. Render thread only.
class MVN_OGRE_API MVNOgreMaterialTexturePixelBuffer : public MVNOgreMaterialTextureImpl {
public:
    MVNOgreMaterialTexturePixelBuffer(int width, int height);
    ~MVNOgreMaterialTexturePixelBuffer() override;
    MVNOgreMaterialTexturePixelBuffer(const MVNOgreMaterialTexturePixelBuffer&) = delete;
    MVNOgreMaterialTexturePixelBuffer& operator=(const MVNOgreMaterialTexturePixelBuffer&) = delete;

    const std::string& getTextureName() override { return textureName; }
    void updateTexture(uint8_t* data, int width, int height) override;

    // The size that the engine really gave the texture.
    int getRealWidth() const { return realWidth; }
    int getRealHeight() const { return realHeight; }

private:
    // Copies a packed realWidth x realHeight picture into the locked texture.
    void _upload(const uint8_t* data);

    std::shared_ptr<Ogre::HardwarePixelBuffer> pixelBuffer;  // face 0, mip 0 of the texture
    std::string textureName;                                 // generated from "PixelBufferTexture"
    int width = 0;                                           // size asked for
    int height = 0;
    int realWidth = 0;  // size the engine made
    int realHeight = 0;
    MVNByteBuffer* scaleBuffer = nullptr;  // owned; target of rescaling, made at the first mismatch
};

}  // namespace Morvane
