#pragma once
#include <string>

#include "MVNOgreExport.h"

namespace Morvane {

// Where the value of a filter uniform comes from.
enum class MVNFilterValueSource {
    Property,          // the filter's property of the same name, else the default
    RenderWidth,       // the property, else the producer's "render.width"
    RenderHeight,      // the property, else the producer's "render.height"
    Playtime,          // the property, else the producer's playtime
    SentRenderWidth,   // no property behind it: the producer's "render.width"
    SentRenderHeight,  // no property behind it: the producer's "render.height"
    SentPlaytime,      // no property behind it: the producer's playtime
    SentFps,           // no property behind it: the profile's frame rate
    ColourChannel,     // one channel of a colour property, over 255
    Computed,          // worked out by the filter's own code (masks, 3D LUT)
    PropertyOnly,      // a property that feeds computed uniforms, never sent
};

// What the filter computes for the uniforms of its material every frame.
enum class MVNFilterFrameStep {
    None,
    Progress,       // ufmProgress: position in the clip over its length
    FadeInOut,      // ufmPlaytime and ufmProgress
    OldTV,          // played filter time and its sine
    OldMovie,       // frames since the clip's start, and the progress
    ClipAnimation,  // ufmProgress and ufmKeepDefault over the animated span
};

// Filter-specific code paths beside the table.
enum class MVNFilterSpecial {
    None,
    SampleSpan,         // "filterSampleIn"/"filterSampleOut" drive ufmUpdateDefault
    ResetEdgeStrength,  // ufmEdgeStrength goes back to its default once sent
    Lut,                // a 3D LUT file becomes a second texture
    MaskLiner,
    MaskDoubleLiner,
    MaskCircle,
    MaskRectangle,      // corner radius from the sizes and the source's shape
    MaskHeart,          // heart size from "ufmHeartSize" and the geometry
    MaskStar,           // star size from "ufmStarSize" and the geometry
};

struct MVNFilterUniform {
    const char* name;              // the uniform's name, and its property's
    MVNFilterValueSource source;
    double fallback;               // the default when the property is absent (colours: 0..255)
    double initValue;              // what the constructor writes, when the filter writes defaults
    const char* liveKey;           // the property whose change sends it again; null: none
    const char* colour;            // ColourChannel: the colour property
    int channel;                   // ColourChannel: 0 red, 1 green, 2 blue, 3 alpha
};

struct MVN_OGRE_API MVNFilterCatalogueEntry {
    const char* name;                   // the value of "resource", and the material's name
    const char* family;                 // adjust, blur, stylize, distort, motion, look, animation, mask, lut
    const char* program;                // fragment program source in media/programs/filters
    const char* define;                 // its preprocessor define, empty when none
    bool propertiesInit;                // the constructor writes the defaults as properties
    MVNFilterFrameStep frame;
    MVNFilterSpecial special;
    const MVNFilterUniform* uniforms;
    int uniformCount;
    const char* const* sentUniforms;    // every uniform the processor may send to the material
    int sentUniformCount;
    bool keepsAlpha;                    // the picture's alpha comes out as it went in, whatever the uniforms
    // A separable filter's two passes: materials drawn one after the other
    // through a render texture of the filter's own, in place of "name",
    // which draws the same in one pass. Null for a single-pass filter.
    const char* passOne;
    const char* passTwo;

    const MVNFilterUniform* uniform(const std::string& uniformName) const;
    bool isMask() const;
};

// The catalogue of named filters, generated from media/filters/catalogue.py
// together with their material scripts.
class MVN_OGRE_API MVNFilterCatalogue {
public:
    // The entry of a filter name, null for a name that is not in the catalogue.
    static const MVNFilterCatalogueEntry* find(const std::string& name);
    static int count();
    // Entries in catalogue order, 0 <= index < count().
    static const MVNFilterCatalogueEntry& at(int index);
};

}  // namespace Morvane
