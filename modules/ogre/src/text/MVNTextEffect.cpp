#include "text/MVNTextEffect.h"

#include <OgreAnimation.h>
#include <OgreAnimationState.h>
#include <OgreGpuProgramManager.h>
#include <OgreKeyFrame.h>
#include <OgreMaterialManager.h>
#include <OgreSceneManager.h>
#include <OgreTechnique.h>

#include <memory>

#include "core/MVNLog.h"
#include "text/TextAlphaAnimaValue.h"
#include "text/TextAnimationKeys.h"
#include "text/TextPrintAnimaValue.h"

namespace Morvane {

namespace {
const char* const kTag = "MVNTextEffect";
const char* const kGroup = "General";
const char* const kPlainProgram = "TextOutMat_FP";
// The window of the render texture a clip shows; every output program has
// it, so a swap of programs carries it over.
const char* const kCanvasUniforms[] = {"textCanvasMaxX", "textCanvasMinX", "textCanvasMaxY", "textCanvasMinY"};

Ogre::Pass* firstPass(const std::string& material) {
    Ogre::MaterialPtr m = Ogre::MaterialManager::getSingleton().getByName(material, kGroup);
    if (!m || m->getNumTechniques() == 0 || m->getTechnique(0)->getNumPasses() == 0) return nullptr;
    return m->getTechnique(0)->getPass(0);
}

// Effect programs use what they need of the uniforms: one they lack is
// passed over without a word.
void setIfDefined(Ogre::Pass* pass, const char* uniform, float value) {
    if (pass == nullptr || !pass->hasFragmentProgram()) return;
    Ogre::GpuProgramParametersSharedPtr params = pass->getFragmentProgramParameters();
    if (params->_findNamedConstantDefinition(uniform) != nullptr) params->setNamedConstant(uniform, value);
}

bool getIfDefined(Ogre::Pass* pass, const char* uniform, float* value) {
    if (pass == nullptr || !pass->hasFragmentProgram()) return false;
    Ogre::GpuProgramParametersSharedPtr params = pass->getFragmentProgramParameters();
    const Ogre::GpuConstantDefinition* def = params->_findNamedConstantDefinition(uniform);
    if (def == nullptr || !def->isFloat()) return false;
    *value = *params->getFloatPointer(def->physicalIndex);
    return true;
}

// Puts `program` on the pass, keeping the canvas window of the one before.
void swapProgram(Ogre::Pass* pass, const std::string& program) {
    float canvas[4] = {1, 0, 1, 0};
    bool had[4];
    for (int i = 0; i < 4; ++i) had[i] = getIfDefined(pass, kCanvasUniforms[i], &canvas[i]);
    Ogre::GpuProgramPtr gpu = Ogre::GpuProgramManager::getSingleton().getByName(program, kGroup);
    if (gpu) gpu->load();
    pass->setFragmentProgram(program);
    for (int i = 0; i < 4; ++i)
        if (had[i]) setIfDefined(pass, kCanvasUniforms[i], canvas[i]);
}
}  // namespace

void MVNTextEffect::init(Ogre::SceneManager* sceneManager, Ogre::SceneNode* indexNode, const TextObjInfo& objInfo,
                         const FontInfo& fontInfo, bool hasOutline, bool three) {
    log_debug(kTag, "init Animation Start");
    _effectName = kPlainProgram;
    _sceneManager = sceneManager;
    _indexNode = indexNode;
    _objInfo = objInfo;
    _fontInfo = fontInfo;
    _hasOutline = hasOutline;
    _three = three;
    _matEffect = false;
    const std::string name = "animation" + _fontInfo.textID;
    const float length = _fontInfo.playTime;
    _animation = _sceneManager->hasAnimation(name) ? _sceneManager->getAnimation(name)
                                                   : _sceneManager->createAnimation(name, length);
    _animationState = _sceneManager->hasAnimationState(name) ? _sceneManager->getAnimationState(name)
                                                             : _sceneManager->createAnimationState(name);
    if (_animation != nullptr && _animationState != nullptr) {
        _animation->destroyAllNodeTracks();
        _animation->destroyAllNumericTracks();
        _animation->setLength(length);
        _animationState->setLength(length);
        _build();
    }
    log_debug(kTag, "init Animation End");
}

void MVNTextEffect::clear() {
    _animation = nullptr;
    _animationState = nullptr;
    _sceneManager = nullptr;
    _indexNode = nullptr;
    _matEffect = false;
}

void MVNTextEffect::_build() {
    const unsigned type = _fontInfo.animationType;
    TextAnimationKeys keys = TextAnimationKeys::build(type, _objInfo, _fontInfo, _glyphCount());
    if (keys.name.empty()) return;
    if (keys.material) {
        _applyMatEffect(keys.name);
        return;
    }
    log_debug(kTag, "%s Start", keys.name.c_str());
    _animation->setInterpolationMode(keys.spline ? Ogre::Animation::IM_SPLINE : Ogre::Animation::IM_LINEAR);
    if (keys.nodeTrack) {
        Ogre::NodeAnimationTrack* track = _animation->createNodeTrack(0, _indexNode);
        for (const TextAnimationKeys::NodeKey& k : keys.node) {
            Ogre::TransformKeyFrame* frame = track->createNodeKeyFrame(k.time);
            if (k.translated) frame->setTranslate(Ogre::Vector3(k.translate));
            if (k.scaled) frame->setScale(Ogre::Vector3(k.scale));
            if (k.rotated) frame->setRotation(Ogre::Quaternion(Ogre::Degree(k.degrees), Ogre::Vector3(k.axis)));
        }
    }
    if (keys.value == TextAnimationKeys::Alpha) {
        _alpha = 1.0f;
        auto value = std::make_shared<TextAlphaAnimaValue>(this);
        value->setValue(0.0f);
        value->setCurrentStateAsBaseValue();
        Ogre::NumericAnimationTrack* track = _animation->createNumericTrack(0, value);
        for (const TextAnimationKeys::ValueKey& k : keys.values)
            track->createNumericKeyFrame(k.time)->setValue(Ogre::AnyNumeric(static_cast<Ogre::Real>(k.value)));
    } else if (keys.value == TextAnimationKeys::Print) {
        _printCount = 0;
        auto value = std::make_shared<TextPrintAnimaValue>(this);
        value->setValue(0);
        value->setCurrentStateAsBaseValue();
        Ogre::NumericAnimationTrack* track = _animation->createNumericTrack(0, value);
        for (const TextAnimationKeys::ValueKey& k : keys.values)
            track->createNumericKeyFrame(k.time)->setValue(Ogre::AnyNumeric(static_cast<int>(k.value)));
    }
    if (keys.value == TextAnimationKeys::Print) log_debug(kTag, "textPrint End mAnimTime");
    else log_debug(kTag, "%s End", keys.name.c_str());
    _animationState->setEnabled(false);
    _animationState->setLoop(false);
}

void MVNTextEffect::setAlpha(float v) {
    _applyMaterialAlpha(v);
    _alpha = v;
}

void MVNTextEffect::_applyMaterialAlpha(float v) {
    const std::string fill = "_TextRttIndexMat" + _fontInfo.textID;
    const std::string outline = "_TextRttIndexOutlineMat" + _fontInfo.textID;
    Ogre::Pass* fillPass = firstPass(fill);
    Ogre::Pass* outlinePass = firstPass(outline);
    if (fillPass == nullptr || outlinePass == nullptr) return;
    if (!_three) {
        setIfDefined(fillPass, "colA", v);
        setIfDefined(outlinePass, "colA", v);
        return;
    }
    // Lit glyphs: the light's share keeps its colour, only its alpha moves.
    Ogre::ColourValue diffuse = fillPass->getDiffuse(), specular = fillPass->getSpecular();
    diffuse.a = v;
    specular.a = v;
    fillPass->setDiffuse(diffuse);
    fillPass->setSpecular(specular);
}

int MVNTextEffect::_glyphCount() const {
    if (_indexNode == nullptr) return 0;
    const int children = static_cast<int>(_indexNode->numChildren());
    return _hasOutline ? children / 2 : children;
}

void MVNTextEffect::_setGlyphVisible(int index, bool visible) {
    const int glyphs = _glyphCount();
    if (_indexNode == nullptr || index < 0 || index >= glyphs) return;
    static_cast<Ogre::SceneNode*>(_indexNode->getChild(static_cast<unsigned short>(index)))->setVisible(visible, true);
    if (_hasOutline) {
        const int twin = index + static_cast<int>(_indexNode->numChildren()) / 2;
        static_cast<Ogre::SceneNode*>(_indexNode->getChild(static_cast<unsigned short>(twin)))->setVisible(visible, true);
    }
}

void MVNTextEffect::setPrintCount(int n) {
    if (n != 0 && _indexNode != nullptr) {
        const int c = _glyphCount();
        const float leaveAt = _fontInfo.playTime * _fontInfo.secendStartTime;
        if (_animationState != nullptr && _animationState->getTimePosition() >= leaveAt) {
            // Leaving: the glyphs go from the front, the last ones stay.
            for (int i = c - n; i < c; ++i) _setGlyphVisible(i, true);
            for (int i = 0; i < c - n; ++i) _setGlyphVisible(i, false);
            _setGlyphVisible(c - n, false);
        } else {
            _setGlyphVisible(n - 1, true);
            for (int i = n; i < c; ++i) _setGlyphVisible(i, false);
            for (int i = 0; i < n; ++i) _setGlyphVisible(i, true);
        }
    }
    _printCount = n;
}

void MVNTextEffect::setAllVisible(bool visible) {
    const int c = _glyphCount();
    for (int i = 0; i < c; ++i) _setGlyphVisible(i, visible);
}

void MVNTextEffect::restore(bool editing) {
    Ogre::Pass* pass = firstPass("mOutMat" + _fontInfo.textID);
    if (editing && pass != nullptr) {
        swapProgram(pass, kPlainProgram);
        return;
    }
    _applyMatEffect(_effectName);
}

void MVNTextEffect::showFinal(unsigned type) {
    switch (type) {
        case 9:
        case 20:
        case 22:
        case 24:
            _applyMaterialAlpha(1.0f);
            break;
        case 10:
        case 23:
            setAllVisible(true);
            break;
        default:
            break;
    }
}

void MVNTextEffect::_applyMatEffect(const std::string& name) {
    log_debug(kTag, "_applyMatEffect _effectName %s Start", name.c_str());
    _matEffect = true;
    _effectName = name;
    Ogre::Pass* pass = firstPass("mOutMat" + _fontInfo.textID);
    if (pass != nullptr) {
        swapProgram(pass, name);
        const unsigned type = _fontInfo.animationType;
        if (type == 25 || type == 26 || type == 27 || type == 30) {
            setIfDefined(pass, "mTextStartTime", _fontInfo.startTime);
            setIfDefined(pass, "mTextEndTime", _fontInfo.endTime);
        }
        setIfDefined(pass, "mTextFirstEndTime", _fontInfo.firstEndTime);
        setIfDefined(pass, "mTextSecendStartTime", _fontInfo.secendStartTime);
        if (name == "TextKaLaOk_FP") {
            setIfDefined(pass, "textCoverColR", _coverColor.r / 255.0f);
            setIfDefined(pass, "textCoverColG", _coverColor.g / 255.0f);
            setIfDefined(pass, "textCoverColB", _coverColor.b / 255.0f);
        }
    }
    log_debug(kTag, "_applyMatEffect _effectName %s End", name.c_str());
}

}  // namespace Morvane
