#include "services/MVNTransitionAudio.h"

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

}  // namespace Morvane
