#pragma once
#include <mutex>
#include <string>
#include <vector>

#include "timeline/MVNActiveClip.h"
#include "timeline/MVNTimelineProducer.h"

namespace Morvane {

class MVNTransitionAudio;

// Tracks stacked: track 0 lowest, each later track above the ones before.
// A track is any registered producer, usually a playlist; tracks and audio
// transitions are held by string id, so a destroyed service simply drops
// out. Thread-safe.
class MVNMultitrack : public MVNTimelineProducer {
public:
    explicit MVNMultitrack(const MVNProfile& profile);
    ~MVNMultitrack() override;

    // The tracks' producers in order (null for a track whose producer is
    // gone), and the audio transitions.
    std::vector<MVNProducer*> tracks() const;
    std::vector<MVNTransitionAudio*> transitionAudios() const;

    // Appends what draws at `position` on every track, in track order.
    void activeAt(int position, std::vector<MVNActiveClip>& out) const;
    // The sum of every track's sound at `position` (MVNAudioBlock), each
    // clip at its own "volume"; -1 where no track sounds.
    int _getAudio(int position, void* converter, MVNFrame** frame) override;

protected:
    MVNMultitrack(const MVNProfile& profile, MVNServiceType type);

    std::vector<std::string> mTrackIds;
    std::vector<std::string> mTransitionAudioIds;
    mutable std::recursive_mutex mTracksLock;

    void _activeAt(int position, std::vector<MVNActiveClip>& out) const override;
};

}  // namespace Morvane
