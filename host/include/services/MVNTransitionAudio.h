#pragma once
#include "services/MVNService.h"

namespace Morvane {

// Mixes the sound of two tracks of a tractor ("transition_audio"): track A
// with track B over the tractor's whole length.
class MVNTransitionAudio : public MVNService {
public:
    explicit MVNTransitionAudio(const MVNProfile& profile);
    ~MVNTransitionAudio() override;

    void setTracks(int a, int b);
    int trackA() const { return getInt32("a_track", 0); }
    int trackB() const { return getInt32("b_track", 1); }
};

}  // namespace Morvane
