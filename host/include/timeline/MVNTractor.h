#pragma once
#include <string>

#include "timeline/MVNMultitrack.h"

namespace Morvane {

// The timeline root ("tractor"): a multitrack that a consumer drives by
// position. activeAt(N) gives every active clip of every track at N, lower
// tracks first.
class MVNTractor : public MVNMultitrack {
public:
    explicit MVNTractor(const MVNProfile& profile);
    ~MVNTractor() override;

    // Removes every track and audio transition; the services stay.
    void clear();
    int count() const;
    // Null for a bad index or a track whose producer is gone.
    MVNProducer* getTrack(int index) const;
    // Puts the registered producer `id` on track `index`, replacing what was
    // there; an index below 0 or past the end appends. -1 when there is no
    // such producer or it is the tractor itself.
    int setTrack(const std::string& id, int index);
    // Mixes the sound of tracks a and b with the audio transition `id`. -1
    // when there is no such transition or a track index is out of range.
    int plantTransitionAudio(const std::string& id, int a, int b);
    // Refreshes playlist tracks and sets "in", "out" and "length" to cover
    // the longest track.
    void refresh();
};

}  // namespace Morvane
