#pragma once
#include "services/MVNService.h"

namespace Morvane {

class MVNFrame;

// Mixes the sound of two inputs ("transition_audio"): two tracks of a
// tractor (setTracks), or the two clips of a playlist's mix. With the
// property "fade" (boolean, default false) it cross-fades: over the
// transition's length A falls from full level to nothing while B rises,
// sample by sample; without it both keep their level.
class MVNTransitionAudio : public MVNService {
public:
    explicit MVNTransitionAudio(const MVNProfile& profile);
    ~MVNTransitionAudio() override;

    void setTracks(int a, int b);
    int trackA() const { return getInt32("a_track", 0); }
    int trackB() const { return getInt32("b_track", 1); }

    // The sound of `position` of a transition `length` positions long: a
    // new block of `samples` samples (MVNAudioBlock) made of the blocks `a`
    // and `b`, which it gives back to the pool (either may be null). Null
    // when both are null or the pools are exhausted.
    MVNFrame* process(int position, int length, int samples, MVNFrame* a, MVNFrame* b);
    // The same with the mode given: for a transition's own sound.
    static MVNFrame* blend(bool fade, int position, int length, int samples, MVNFrame* a, MVNFrame* b);
};

}  // namespace Morvane
