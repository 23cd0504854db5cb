#include "filters/MVNFilterParameters.h"

#include <cmath>
#include <cstring>

#include "filters/MVNFilterCatalogue.h"
#include "core/MVNLog.h"
#include "core/MVNLut3d.h"
#include "filters/MVNOgreFilterBase.h"
#include "services/MVNProducer.h"

namespace Morvane {

namespace {
// The filter service's log lines, wherever its uniform code runs.
const char* const kTag = "MVNFilterSample";
// The engine's Ogre::TEX_TYPE_2D.
const int kTexture2D = 2;

// Heart and star masks are drawn from reference shapes in a 1024-pixel
// square; these are their sizes and the corrections for portrait clips.
const double kHeartWidth = 601.94;
const double kHeartHeight = 540.34;
const double kHeartStretch = 1.11400229485139;
const double kHeartPortrait = 0.8976641893386841;
const double kStarWidth = 578.0;
const double kStarHeight = 552.0;
const double kStarStretch = 1.04710144927536;
const double kStarPortrait = 0.9550173282623291;

// The colour of a colour property as the table's defaults make it; alpha
// is opaque unless the table names it.
MVNColor4B defaultColour(const MVNFilterCatalogueEntry& entry, const char* colour) {
    double channels[4] = {0, 0, 0, 255};
    for (int i = 0; i < entry.uniformCount; ++i) {
        const MVNFilterUniform& u = entry.uniforms[i];
        if (u.source == MVNFilterValueSource::ColourChannel && std::strcmp(u.colour, colour) == 0) {
            channels[u.channel] = u.fallback;
        }
    }
    return MVNColor4B(static_cast<uint8_t>(channels[0]), static_cast<uint8_t>(channels[1]),
                      static_cast<uint8_t>(channels[2]), static_cast<uint8_t>(channels[3]));
}

double channelOf(const MVNColor4B& c, int channel) {
    switch (channel) {
        case 0: return c.r;
        case 1: return c.g;
        case 2: return c.b;
        default: return c.a;
    }
}

// Position over length, 0 for a clip without length.
float progressOf(int position, int in, int playtime) {
    return playtime > 0 ? static_cast<float>(position - in) / static_cast<float>(playtime) : 0.0f;
}
}  // namespace

MVNFilterParameters::MVNFilterParameters(MVNProperties& filter, const std::string& resource, MVNOgreFilterBase* node,
                                         MVNProducer* producer, const std::string& lutTexture, double fps)
    : mFilter(filter),
      mEntry(MVNFilterCatalogue::find(resource)),
      mNode(node),
      mProducer(producer),
      mLutTexture(lutTexture),
      mFps(fps) {}

void MVNFilterParameters::_send(const char* name, double value) {
    if (mNode) mNode->setUniformFloat(name, static_cast<float>(value));
}

void MVNFilterParameters::writeDefaults() {
    if (mEntry == nullptr || !mEntry->propertiesInit) return;
    mFilter.block();
    for (int i = 0; i < mEntry->uniformCount; ++i) {
        const MVNFilterUniform& u = mEntry->uniforms[i];
        if (u.source == MVNFilterValueSource::Property) {
            mFilter.setDouble(u.name, u.initValue);
        } else if (u.source == MVNFilterValueSource::ColourChannel && !mFilter.has(u.colour)) {
            mFilter.setColor(u.colour, defaultColour(*mEntry, u.colour));
        }
    }
    mFilter.unblock();
}

// One uniform from where the table says its value comes from. `live` is a
// property change: then every value but a colour's is read with default 0.
void MVNFilterParameters::_sendUniform(const MVNFilterUniform& u, bool live) {
    switch (u.source) {
        case MVNFilterValueSource::Property:
            _send(u.name, mFilter.getDouble(u.name, live ? 0.0 : u.fallback));
            break;
        case MVNFilterValueSource::RenderWidth:
            _send(u.name, mFilter.getDouble(u.name, live ? 0.0 : mProducer->getInt32("render.width", 0)));
            break;
        case MVNFilterValueSource::RenderHeight:
            _send(u.name, mFilter.getDouble(u.name, live ? 0.0 : mProducer->getInt32("render.height", 0)));
            break;
        case MVNFilterValueSource::Playtime:
            _send(u.name, mFilter.getDouble(u.name, live ? 0.0 : mProducer->getPlaytime()));
            break;
        case MVNFilterValueSource::SentRenderWidth:
            _send(u.name, mProducer->getInt32("render.width", 0));
            break;
        case MVNFilterValueSource::SentRenderHeight:
            _send(u.name, mProducer->getInt32("render.height", 0));
            break;
        case MVNFilterValueSource::SentPlaytime:
            _send(u.name, mProducer->getPlaytime());
            break;
        case MVNFilterValueSource::SentFps:
            _send(u.name, mFps);
            break;
        case MVNFilterValueSource::ColourChannel: {
            MVNColor4B colour = mFilter.getColor(u.colour, defaultColour(*mEntry, u.colour));
            _send(u.name, channelOf(colour, u.channel) / 255.0);
            break;
        }
        case MVNFilterValueSource::Computed:
        case MVNFilterValueSource::PropertyOnly:
            break;
    }
}

void MVNFilterParameters::setup() {
    if (mProducer == nullptr || mEntry == nullptr) return;
    if (mEntry->frame == MVNFilterFrameStep::ClipAnimation) _normaliseAnimationSpan();
    for (int i = 0; i < mEntry->uniformCount; ++i) _sendUniform(mEntry->uniforms[i], false);
    switch (mEntry->special) {
        case MVNFilterSpecial::ResetEdgeStrength:
            _resetEdgeStrength();
            break;
        case MVNFilterSpecial::Lut:
            _loadLut(true);
            break;
        default:
            if (mEntry->isMask()) _maskSetup();
            break;
    }
}

// A value given for the edge strength reaches the GPU for this
// configuration only: the property goes back to its default, and its change
// is announced (so the GPU follows) exactly as an unblocked set would be.
// An already blocked filter stays blocked, an unblocked one unblocked.
void MVNFilterParameters::_resetEdgeStrength() {
    const MVNFilterUniform* strength = mEntry->uniform("ufmEdgeStrength");
    if (strength == nullptr) return;
    bool blocked = mFilter.isBlocked();
    mFilter.unblock();
    mFilter.setDouble(strength->name, strength->fallback);
    if (blocked) mFilter.block();
}

// Spans given in frames (above 0 read as whole numbers) become fractions of
// the clip; a video animation always runs to the clip's end.
void MVNFilterParameters::_normaliseAnimationSpan() {
    int playtime = mProducer->getPlaytime();
    for (const char* key : {"ufmAnimIn", "ufmAnimOut"}) {
        int frames = mFilter.getInt32(key, 0);
        if (frames > 0 && playtime > 0) {
            mFilter.block();
            mFilter.setDouble(key, static_cast<float>(frames) / static_cast<float>(playtime));
            mFilter.unblock();
        }
    }
    if (mFilter.getInt32("videoAnimeType", 0) != 0 && mFilter.getDouble("ufmAnimOut", 0.0) != 1.0) {
        mFilter.block();
        mFilter.setDouble("ufmAnimOut", 1.0);
        mFilter.unblock();
    }
}

bool MVNFilterParameters::animationSpan(double animIn, double animOut, int playtime, int in, int position,
                                        float& progress) {
    unsigned a = static_cast<unsigned>(std::trunc(animIn * playtime));
    unsigned b = static_cast<unsigned>(std::trunc(animOut * playtime));
    unsigned pos = static_cast<unsigned>(position);
    unsigned start = static_cast<unsigned>(in);
    if (a + start > pos || pos > b + start) return false;
    unsigned span = b - a;
    progress = span == 0 ? 0.0f : static_cast<float>(pos - a - start) / static_cast<float>(span);
    return true;
}

void MVNFilterParameters::perFrame(int position, float time) {
    if (mEntry == nullptr || mProducer == nullptr || mNode == nullptr) return;
    int playtime = mProducer->getPlaytime();
    int in = mProducer->getIn();
    switch (mEntry->frame) {
        case MVNFilterFrameStep::None:
            break;
        case MVNFilterFrameStep::Progress:
            _send("ufmProgress", progressOf(position, in, playtime));
            break;
        case MVNFilterFrameStep::FadeInOut:
            _send("ufmPlaytime", static_cast<float>(playtime));
            _send("ufmProgress", progressOf(position, in, playtime));
            break;
        case MVNFilterFrameStep::OldTV: {
            // The one effect on played time: it stops when frames stop.
            float t = std::fmod(time, 120.0f);
            _send("ufmTime_0_X", t);
            _send("ufmSin_time_0_X", std::sin(t));
            break;
        }
        case MVNFilterFrameStep::OldMovie:
            _send("ufmTimeScratchLight", static_cast<float>(position - in));
            _send("ufmTime", progressOf(position, in, playtime));
            break;
        case MVNFilterFrameStep::ClipAnimation: {
            float progress = 0;
            if (animationSpan(mFilter.getDouble("ufmAnimIn", 0.0), mFilter.getDouble("ufmAnimOut", 0.0), playtime,
                              mProducer->getInt32("in", 0), position, progress)) {
                _send("ufmProgress", progress);
                _send("ufmKeepDefault", 0.0);
            } else {
                _send("ufmKeepDefault", 1.0);
            }
            break;
        }
    }
}

void MVNFilterParameters::setUniform(const std::string& key) {
    if (mNode == nullptr || mProducer == nullptr) {
        log_debug(kTag, "_SetUniform dont have mFilterNode");
        return;
    }
    if (mEntry == nullptr) return;
    if (mEntry->special == MVNFilterSpecial::Lut && key == "ufmMVNLutPath") {
        _loadLut(false);
        return;
    }
    if (mEntry->isMask() && _maskKey(key)) return;
    bool matched = false;
    for (int i = 0; i < mEntry->uniformCount; ++i) {
        const MVNFilterUniform& u = mEntry->uniforms[i];
        if (u.liveKey == nullptr || key != u.liveKey || u.source == MVNFilterValueSource::PropertyOnly) continue;
        if (u.source == MVNFilterValueSource::Computed) {
            // Computed uniforms that are live (the LUT's intensity) follow
            // their property like any other.
            _send(u.name, mFilter.getDouble(u.name, 0.0));
        } else {
            _sendUniform(u, true);
        }
        matched = true;
    }
    if (matched && mEntry->isMask()) _sendAspect();
}

// --- masks ------------------------------------------------------------------------------------

// The producer's geometry, or its whole profile while it has none.
void MVNFilterParameters::_geometrySize(double& width, double& height) const {
    MVNRect rect = mProducer->getGeometry();
    width = rect.width;
    height = rect.height;
    if (width <= 0 || height <= 0) {
        width = mProducer->profile().width();
        height = mProducer->profile().height();
    }
}

void MVNFilterParameters::_sendAspect() {
    double w, h;
    _geometrySize(w, h);
    _send("ufmAspect", mFilter.getDouble("ufmAspect", h > 0 ? w / h : 1.0));
}

void MVNFilterParameters::_sendHeartOrStar() {
    double w, h;
    _geometrySize(w, h);
    double m = std::min(w, h);
    if (mEntry->special == MVNFilterSpecial::MaskHeart) {
        double size = mFilter.getDouble("ufmHeartSize", 0.0) * m * (w > h ? 1.0 : kHeartPortrait);
        _send("ufmHeartSizeX", size / kHeartWidth * (1024.0 / w) * kHeartStretch);
        _send("ufmHeartSizeY", size / kHeartHeight * (1024.0 / h));
    } else if (mEntry->special == MVNFilterSpecial::MaskStar) {
        double size = mFilter.getDouble("ufmStarSize", 0.0) * m * (w > h ? 1.0 : kStarPortrait);
        _send("ufmStarSizeX", size / kStarWidth * (1024.0 / w) * kStarStretch);
        _send("ufmStarSizeY", size / kStarHeight * (1024.0 / h));
    }
}

// The rectangle's corner radius: at most half its shorter side, in picture
// heights, as a share (ufmCircleRadius) of that. The sizes are sent first.
void MVNFilterParameters::_sendRectangleRadius(double fallbackSize) {
    double w, h;
    _geometrySize(w, h);
    double sx = mFilter.getDouble("ufmRectangleSizeX", fallbackSize);
    double sy = mFilter.getDouble("ufmRectangleSizeY", fallbackSize);
    int metaWidth = mProducer->getInt32("metadata.width", 0);
    int metaHeight = mProducer->getInt32("metadata.height", 0);
    // The source's own shape, the clip's when the source didn't say.
    double shape = metaWidth > 0 && metaHeight > 0 ? static_cast<double>(metaWidth) / metaHeight : w / h;
    double t = sx * shape;
    double r;
    if (w > h) {
        // Compared with the source's height in pixels, not with sy: so it
        // has always been, and saved projects look as they did.
        r = sy;
        if (metaHeight > t) r = t;
    } else {
        r = t;
        if (t > sy) r = sy;
    }
    _send("ufmRectangleSizeX", sx);
    _send("ufmRectangleSizeY", sy);
    _send("ufmCircleRadius", r * 0.5 * mFilter.getDouble("ufmCircleRadius", 0.0));
}

void MVNFilterParameters::_maskSetup() {
    _sendAspect();
    if (mEntry->special == MVNFilterSpecial::MaskRectangle) _sendRectangleRadius(0.25);
    _sendHeartOrStar();
}

bool MVNFilterParameters::_maskKey(const std::string& key) {
    if (mEntry->special == MVNFilterSpecial::MaskRectangle &&
        (key == "ufmRectangleSizeX" || key == "ufmRectangleSizeY" || key == "ufmCircleRadius")) {
        _sendRectangleRadius(0.0);
    } else if ((mEntry->special == MVNFilterSpecial::MaskHeart && key == "ufmHeartSize") ||
               (mEntry->special == MVNFilterSpecial::MaskStar && key == "ufmStarSize")) {
        _sendHeartOrStar();
    } else {
        return false;
    }
    _sendAspect();
    return true;
}

void MVNFilterParameters::applyGeometry() {
    if (mEntry == nullptr || mProducer == nullptr || !mEntry->isMask()) return;
    _sendAspect();
    _sendHeartOrStar();
}

// --- 3D lookup table ----------------------------------------------------------------------------

void MVNFilterParameters::_loadLut(bool withIntensity) {
    MVNLut3d lut;
    std::string path = mFilter.getString("ufmMVNLutPath", "");
    int rc = path.empty() ? -1 : lut.loadFromFile(path);
    if (rc != 0 || lut.data() == nullptr) {
        // The old table stays bound; the picture passes unchanged.
        mFilter.block();
        mFilter.setBoolean("_ufmLutFileError", true);
        mFilter.unblock();
        _send("ufmlutPathError", 1.0);
        return;
    }
    mFilter.block();
    mFilter.setBoolean("_ufmLutFileError", false);
    mFilter.unblock();
    _send("ufmlutPathError", 0.0);
    int n = lut.lutSize();
    int width = n * n;
    // The upload waits for the render thread, so the table may go after it.
    if (mNode) mNode->addExtraTexture(mLutTexture, lut.data(), width, n, kTexture2D);
    _send("ufmWidth", width);
    _send("ufmHeight", n);
    if (withIntensity) _send("ufmIntensity", mFilter.getDouble("ufmIntensity", 1.0));
}

}  // namespace Morvane
