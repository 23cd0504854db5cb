#pragma once
#include <string>

#include "MVNOgreExport.h"
#include "core/MVNRect.h"
#include "services/MVNProducer.h"
#include "text/FontInfo.h"
#include "text/MVNTextEffect.h"
#include "text/MVNTextTitleDeCodec.h"
#include "text/TextObjInfo.h"
#include "text/fonts/FTPoint.h"

namespace Ogre {
class SceneManager;
class SceneNode;
}  // namespace Ogre

namespace Morvane {

// The service "text": a string turned into glyph meshes and shown in the
// main scene at the clip's depth. It owns no pixels: its frames are blank
// and the scene draws the picture.
//
// Flat text without animation ("direct") hangs its glyphs below the node
// "_TextMorVaneNode"+textID of the main scene. 3D or animated text
// (`_needRtt`) goes into the private scene "_TextRttTrackMgr"+zOrder shared
// by the text clips of one track; its render texture is shown by the plane
// "mOutEnt"+textID. Every engine step runs on the render thread and the
// caller waits for it; each step has its name beside the operation that
// posts it.
//
// Properties: see _textPropertiesInit, which writes every key with its
// default back at construction. Colours are MVNColor4B or "#rrggbbaa".
class MVN_OGRE_API MVNProducerText : public MVNProducer {
public:
    // Empty font paths (either one) mean the default fonts.
    MVNProducerText(const MVNProfile& profile, int zOrder, bool textThree, const std::string& fontFile,
                    const std::string& backupPath, bool cloned);
    ~MVNProducerText() override;

    void _OnPropertyChanged(const char* name) override;
    int init() override;
    void release() override;
    void render(int frame) override;
    void resetRender(int position) override;
    int seek(int position, int whence) override { return position; }
    void refreshRender(int frame) override { render(frame); }
    int getRenderType(int) override { return 1; }
    void setActive(bool active, bool force, int position, int flags) override;
    void _OnGeometryChanged(const MVNRect& rect) override;
    void _OnVisibleChanged(bool visible) override;
    MVNProducer* _alloc() override;
    // Draws through render() and gives a blank frame: the scene is the picture.
    int _getImage(int position, MVNFrame** frame) override;

    // The default main and fallback fonts, resolved as absolute paths.
    static std::string defaultFontFile();
    static std::string defaultBackupFile();

    const std::string& textID() const { return _fontInfo.textID; }
    bool needRtt() const { return _needRtt; }
    // Code points that layout takes from "textString", line breaks included.
    static constexpr int kMaxChars = 281;

private:
    void _textPropertiesInit();
    bool _computeNeedRtt();

    // Render-thread bodies and the waits that post them.
    int _textInit();
    int _textInitRenderableWait();
    void _textRelease();
    void _textReleaseRenderableWait();
    int _reconfigTextStatus(const char* name);
    int _reconfigTextStatusRenderableWait(const char* name);
    int _reconfigTextGeo(const MVNRect& rect);
    int _reconfigTextGeoRenderableWait(const MVNRect& rect);
    void _checkTextRenderVisible(int frame);
    void _checkTextRenderVisibleRaWait(int frame);
    void _renderTargetUpdate();
    void _renderTargetUpdateRaWait();
    void _textVisible(bool visible);
    void _textVisibleRaWait(bool visible);
    // Moves the clip's animation to `time` seconds, or its effect program
    // to `frame` of its play time.
    void _animationsUpdate(int frame, float time);
    void _animationsUpdateRenderableWait(int frame, float time);

    // Scenes and materials.
    int _textOgreRttInit();
    int _textOgreMVNOreInit();
    void _releaseTextOutScene();
    int _releaseTextMesh(int zOrder);
    int _textChangeTrack();
    int _textUpdate();
    Ogre::SceneManager* getRttMgr();
    Ogre::SceneNode* getRttIndexNode();
    void _setMaterialColours(const std::string& material, bool fill);
    void _setAlphaRejection();
    void _setCanvasUniforms();
    void _placeIndexNode(bool moveLights);

    // Geometry.
    int _updateTextNode();
    int _updateRttObjNode();
    int _updateMorvaneObjNode();
    int _createTextObj(FontInfo info, TextObjInfo& obj, bool outline);
    int _updateTextGeo(const MVNRect& rect);
    void _destroyGlyphs(Ogre::SceneNode* node);
    int _updateAnimation(const char* name);

    // Title picture behind the text (MVNProducerTextTitle.cpp): a video
    // with its mask video, or a still image, on the plane "mOutTitleEnt".
    int _updateTextTitleVideo();
    int _updateTextTitleImage();
    int _setTextTitleGeo(const MVNRect& rect);
    int _buildTitlePlane(Ogre::SceneNode* node);
    Ogre::SceneNode* _titleNode();
    void _updateTitleFrames(int relative);
    void _releaseTextTitle();

    std::string _zSuffix() const { return std::to_string(_fontInfo.zOrder); }
    // Depths in the main scene of the box and the title behind a text at
    // `zOrder` (MVNProducerTextTitle.cpp).
    static float _boxDepth(int zOrder);
    static float _titleDepth(int zOrder);

    MVNRect _geometry;
    Ogre::SceneManager* _sceneManager = nullptr;  // main scene, not owned
    std::string _rttNodeName;
    std::string _nodeName;
    std::string _titleNodeName;
    std::string _rttMatName;
    std::string _rttOutlineMatName;
    // Flat glyph vertices by character, kept across rebuilds of the text;
    // emptied by a change of font, size or style and by release.
    FTGlyphCacheMap _glyphCache;
    FTGlyphCacheMap _outlineGlyphCache;
    float _textPosition[3];
    float _titlePosition[3];
    float _titleWidth, _titleHeight;
    // Visible window of the render texture, in fractions of the profile.
    float _canvasMinX = 0, _canvasMaxX = 1, _canvasMinY = 0, _canvasMaxY = 1;
    bool _titleVideoOn = false, _titleImageOn = false;
    bool _cloned;
    int _maxChars = kMaxChars;
    int _titleEditFrame = 0;
    // The title video and its mask; opened once, closed at release.
    MVNTextTitleDeCodec _titleDecoder;
    MVNTextTitleDeCodec _titleMaskDecoder;
    FontInfo _fontInfo;
    TextObjInfo _textObjInfo;
    bool _needRtt = false;
    // "textAnimationType": rebuilt by _updateAnimation, emptied with the
    // track scene's objects in _releaseTextMesh.
    MVNTextEffect _textEffect;
};

}  // namespace Morvane
