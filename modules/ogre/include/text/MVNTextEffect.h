#pragma once
#include <cstdint>
#include <string>

#include "core/MVNColor4B.h"
#include "text/FontInfo.h"
#include "text/TextObjInfo.h"

namespace Ogre {
class Animation;
class AnimationState;
class SceneManager;
class SceneNode;
}  // namespace Ogre

namespace Morvane {

// How a text clip appears and leaves ("textAnimationType"): key frames on
// the clip's index node in its track scene, key frames on the text's alpha
// or on its number of visible glyphs, or an effect program on the clip's
// output material driven by "ufmProgress". The producer holds one and
// rebuilds it at each change of the type or its times. Render thread only.
class MVNTextEffect {
public:
    MVNTextEffect() = default;
    MVNTextEffect(const MVNTextEffect&) = delete;
    MVNTextEffect& operator=(const MVNTextEffect&) = delete;

    // Empties the animation "animation"+textID (made on first use) and
    // builds the keys of fontInfo.animationType into it; the state is left
    // disabled, so the next frame enables it.
    void init(Ogre::SceneManager* sceneManager, Ogre::SceneNode* indexNode, const TextObjInfo& objInfo,
              const FontInfo& fontInfo, bool hasOutline, bool three);
    // Forgets the engine objects: the producer destroyed them.
    void clear();

    void setCoverColor(MVNColor4B color) { _coverColor = color; }
    // Alpha of the glyph materials (flat) or of the fill's diffuse and
    // specular (3D); the materials are left alone unless both exist.
    void setAlpha(float v);
    // Shows the first n glyphs while the text comes, the last n while it
    // leaves (from the second start time on).
    void setPrintCount(int n);
    void setAllVisible(bool visible);
    // While editing, the output material shows the plain text; otherwise
    // the effect program goes back on.
    void restore(bool editing);
    // Edit mode of a node or value effect: the text as it stands between its
    // entry and its exit.
    void showFinal(unsigned type);
    // Swaps the output program for `name` and sets the uniforms it has.
    void _applyMatEffect(const std::string& name);

    bool matEffect() const { return _matEffect; }
    const std::string& effectName() const { return _effectName; }
    float alpha() const { return _alpha; }
    int32_t printCount() const { return _printCount; }
    Ogre::AnimationState* animationState() const { return _animationState; }

private:
    void _applyMaterialAlpha(float v);
    int _glyphCount() const;
    void _setGlyphVisible(int index, bool visible);
    void _build();

    bool _matEffect = false;
    std::string _effectName;
    MVNColor4B _coverColor = MVNColor4B(0, 0, 0, 1);
    Ogre::Animation* _animation = nullptr;
    Ogre::AnimationState* _animationState = nullptr;
    float _alpha = 1.0f;
    int32_t _printCount = 0;
    TextObjInfo _objInfo;
    FontInfo _fontInfo;
    bool _hasOutline = false;  // the index node's children are fill glyphs, then outline glyphs
    bool _three = false;
    Ogre::SceneManager* _sceneManager = nullptr;  // the track scene, not owned
    Ogre::SceneNode* _indexNode = nullptr;        // the clip's node in it, not owned
};

}  // namespace Morvane
