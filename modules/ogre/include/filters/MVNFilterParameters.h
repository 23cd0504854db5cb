#pragma once
#include <string>

#include "MVNOgreExport.h"

namespace Morvane {

class MVNOgreFilterBase;
class MVNProducer;
class MVNProperties;
struct MVNFilterCatalogueEntry;
struct MVNFilterUniform;

// The uniforms of a catalogue filter: what its constructor writes, what
// configuration sends, what a property change sends and what every frame
// computes, all driven by the catalogue table (MVNFilterCatalogue). A name
// that is not in the catalogue does nothing anywhere.
//
// The object lives for one call: it binds the filter's properties, its
// back-end and the producer it is attached to. It sends on the calling
// thread; perFrame is called on the render thread.
class MVN_OGRE_API MVNFilterParameters {
public:
    // node and producer may be null (only writeDefaults needs neither).
    // lutTexture names the filter's lookup-table texture; fps is the
    // profile's frame rate.
    MVNFilterParameters(MVNProperties& filter, const std::string& resource, MVNOgreFilterBase* node,
                        MVNProducer* producer, const std::string& lutTexture, double fps);

    // The constructor's defaults as properties, with signals blocked. Names
    // without a row write nothing.
    void writeDefaults();
    // Every uniform from its property or its fallback, the computed ones, the
    // clip-animation span and the lookup table. Nothing without a producer.
    void setup();
    // The uniforms that a change of the property `key` sends. Without a
    // back-end or a producer: "_SetUniform dont have mFilterNode" (debug).
    void setUniform(const std::string& key);
    // The per-frame uniforms at `position`; `time` is the filter's played
    // time in seconds.
    void perFrame(int position, float time);
    // The geometry-derived uniforms of the masks, after the clip moved.
    void applyGeometry();

    // The clip-animation span at `position`: true with the progress when it
    // runs, false outside it (the picture is drawn as it is).
    static bool animationSpan(double animIn, double animOut, int playtime, int in, int position, float& progress);

private:
    void _send(const char* name, double value);
    void _sendUniform(const MVNFilterUniform& uniform, bool live);
    void _resetEdgeStrength();
    void _normaliseAnimationSpan();
    void _maskSetup();
    bool _maskKey(const std::string& key);
    void _sendAspect();
    void _sendHeartOrStar();
    void _sendRectangleRadius(double fallbackSize);
    void _loadLut(bool withIntensity);
    void _geometrySize(double& width, double& height) const;

    MVNProperties& mFilter;
    const MVNFilterCatalogueEntry* mEntry;  // null for a name outside the catalogue
    MVNOgreFilterBase* mNode;
    MVNProducer* mProducer;
    const std::string& mLutTexture;
    double mFps;
};

}  // namespace Morvane
