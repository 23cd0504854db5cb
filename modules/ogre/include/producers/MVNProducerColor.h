#pragma once
#include "core/MVNColor4B.h"
#include "MVNOgreExport.h"
#include "producers/MVNOgreQuadProducer.h"

namespace Morvane {

// The service "ogre.color": paints a solid colour into a pooled frame of
// "width" x "height" (B, G, R, A bytes), which the host uploads to the
// producer's quad. On request it marks the border (blue, four pixels on the
// top and left, three on the bottom and right) and draws a white grid every
// 50 pixels; both keep the colour's alpha.
//
// Properties: "color" (default black with alpha byte 1), "border", "grids",
// "zOrder", "service" ("ogre.color"), "flags" (1), "_active", "_inputType"
// (0), "width"/"height", "render.width"/"render.height".
class MVN_OGRE_API MVNProducerColor : public MVNOgreQuadProducer {
public:
    // Built with its quad, 99999 seconds long; null with "create failed".
    static MVNProducerColor* create(const MVNProfile& profile, int zOrder, int width, int height, MVNColor4B color);

    MVNProducerColor(const MVNProfile& profile, int zOrder);

    int init() override;
    // Colour frames aren't cached: the same as _getImage.
    int _getCacheImage(int position, MVNFrame** frame) override;
    MVNProducer* _alloc() override;

    // Paints one picture of width x height into bgra (4 bytes a pixel).
    static void paint(uint8_t* bgra, int width, int height, MVNColor4B color, bool border, bool grids);

protected:
    // The colour with its border and grid, from the properties.
    void _paint(uint8_t* bgra, int width, int height, int position) override;
    // Colour, border, grid and size, packed: the same picture is uploaded
    // once, not every frame.
    uint64_t _pictureKey(int position) override;
};

}  // namespace Morvane
