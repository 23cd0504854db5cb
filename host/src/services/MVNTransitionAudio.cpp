#include "services/MVNTransitionAudio.h"

#include "core/MVNAudioBlock.h"
#include "core/MVNFrame.h"

namespace Morvane {

MVNTransitionAudio::MVNTransitionAudio(const MVNProfile& profile)
    : MVNService(profile, MVN_SERVICE_TRANSITION_AUDIO) {
    block();
    setString("service", "transition_audio");
    unblock();
}

MVNTransitionAudio::~MVNTransitionAudio() = default;

void MVNTransitionAudio::setTracks(int a, int b) {
    setInt32("a_track", a);
    setInt32("b_track", b);
}

MVNFrame* MVNTransitionAudio::process(int position, int length, int samples, MVNFrame* a, MVNFrame* b) {
    return blend(getBoolean("fade", false), position, length, samples, a, b);
}

MVNFrame* MVNTransitionAudio::blend(bool fade, int position, int length, int samples, MVNFrame* a, MVNFrame* b) {
    MVNFrame* out = (a != nullptr || b != nullptr) ? MVNAudioBlock::pullSilence(samples) : nullptr;
    if (out != nullptr) {
        if (fade && length > 0) {
            // B's level at the start of this position and of the next.
            float first = static_cast<float>(position) / static_cast<float>(length);
            float end = static_cast<float>(position + 1) / static_cast<float>(length);
            MVNAudioBlock::mixRamp(out, a, 1.0f - first, 1.0f - end);
            MVNAudioBlock::mixRamp(out, b, first, end);
        } else {
            MVNAudioBlock::mixInto(out, a, 1.0f);
            MVNAudioBlock::mixInto(out, b, 1.0f);
        }
    }
    MVNFrame::pushBackPool(a);
    MVNFrame::pushBackPool(b);
    return out;
}

}  // namespace Morvane
