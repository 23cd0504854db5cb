// A text clip's animation ("textAnimationType"): rebuilt from the
// properties on every change of the type, its times, the clip's length or
// the text; moved on each drawn frame. MVNTextEffect does the work.
#include <OgreAnimationState.h>
#include <OgreSceneManager.h>

#include <exception>
#include <string>

#include "core/MVNColor4B.h"
#include "core/MVNLog.h"
#include "engine/MVNOgreManager.h"
#include "text/MVNProducerText.h"
#include "text/TextUtils.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerText";
}  // namespace

int MVNProducerText::_updateAnimation(const char*) {
    const unsigned type = static_cast<unsigned>(getInt32("textAnimationType", 0));
    Ogre::SceneManager* mgr = getRttMgr();
    Ogre::SceneNode* index = getRttIndexNode();
    // Direct text has no track scene: a colour change of it ends here.
    if (type == 0 || mgr == nullptr || index == nullptr) return -1;
    if (type == 29) _textEffect.setCoverColor(getColor("AnimTextKaLaOkCol", MVNColor4B(0, 0, 0, 1)));
    const double fps = mProfile.fps() > 0 ? mProfile.fps() : 25.0;
    _fontInfo.animationType = type;
    _fontInfo.firstEndTime = static_cast<float>(getDouble("textAnimationFirstEndTime", 0.4));
    _fontInfo.startTime = static_cast<float>(getDouble("textAnimationStartTime", 0));
    _fontInfo.endTime = static_cast<float>(getDouble("textAnimationEndTime", 1));
    _fontInfo.secendStartTime = static_cast<float>(getDouble("textAnimationSecendStartTime", 0.6));
    _fontInfo.playTime = static_cast<float>(getPlaytime() / fps);
    _fontInfo.alpha = getColor("textColorBase", MVNColor4B(255, 255, 255, 255)).a / 255.0f;
    _textEffect.init(mgr, index, _textObjInfo, _fontInfo, getDouble("textOutlineSize", 0) != 0,
                     getBoolean("textThree", false));
    return 0;
}

void MVNProducerText::_animationsUpdateRenderableWait(int frame, float time) {
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&] {
            try {
                _animationsUpdate(frame, time);
            } catch (const std::exception& e) {
                log_error(kTag, "animationsUpdate catch error: %s", e.what());
            }
        },
        "animationsUpdate");
}

void MVNProducerText::_animationsUpdate(int frame, float time) {
    Ogre::SceneManager* mgr = getRttMgr();
    if (mgr == nullptr) return;
    const std::string name = "animation" + _fontInfo.textID;
    if (!mgr->hasAnimationState(name)) return;
    Ogre::AnimationState* state = mgr->getAnimationState(name);
    if (!_textEffect.matEffect()) {
        if (!state->getEnabled()) state->setEnabled(true);
        state->setTimePosition(time);
        try {
            mgr->_applySceneAnimations();
        } catch (const std::exception& e) {
            log_error(kTag, "_applySceneAnimations catch error: %s",
                      (std::string("Error occurred during execution: ") + e.what()).c_str());
        }
        return;
    }
    if (!state->getEnabled()) {
        state->setEnabled(true);
        _textEffect.restore(false);
    }
    // Effect programs run on frames, from 0 to just under 1 over the clip.
    const int playtime = getPlaytime();
    if (_textEffect.matEffect() && playtime > 0)
        TextUtils::setMaterialFloat("mOutMat" + _fontInfo.textID, 0, "ufmProgress",
                                    static_cast<float>(frame) / static_cast<float>(playtime));
}

}  // namespace Morvane
