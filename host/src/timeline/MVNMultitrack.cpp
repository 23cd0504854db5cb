#include "timeline/MVNMultitrack.h"

#include "services/MVNFactory.h"
#include "core/MVNLog.h"
#include "timeline/MVNPlaylist.h"
#include "services/MVNTransitionAudio.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNMultitrack";
}  // namespace

MVNMultitrack::MVNMultitrack(const MVNProfile& profile) : MVNMultitrack(profile, MVN_SERVICE_PRODUCER) {}

MVNMultitrack::MVNMultitrack(const MVNProfile& profile, MVNServiceType type) : MVNTimelineProducer(profile, type, kTag) {
    block();
    setInt32("in", 0);
    setInt32("out", -1);
    setInt32("length", 0);
    unblock();
}

MVNMultitrack::~MVNMultitrack() = default;

std::vector<MVNProducer*> MVNMultitrack::tracks() const {
    std::lock_guard<std::recursive_mutex> guard(mTracksLock);
    std::vector<MVNProducer*> out;
    out.reserve(mTrackIds.size());
    for (const std::string& id : mTrackIds) out.push_back(getProducerById(id));
    return out;
}

std::vector<MVNTransitionAudio*> MVNMultitrack::transitionAudios() const {
    std::lock_guard<std::recursive_mutex> guard(mTracksLock);
    std::vector<MVNTransitionAudio*> out;
    for (const std::string& id : mTransitionAudioIds) {
        if (MVNTransitionAudio* t = getTransitionAudioById(id)) out.push_back(t);
    }
    return out;
}

void MVNMultitrack::activeAt(int position, std::vector<MVNActiveClip>& out) const {
    if (position < 0) return;
    std::lock_guard<std::recursive_mutex> guard(mTracksLock);
    int n = static_cast<int>(mTrackIds.size());
    for (int i = 0; i < n; ++i) {
        MVNProducer* track = getProducerById(mTrackIds[i]);
        if (track == nullptr) continue;
        int local = track->getIn() + position;
        if (auto* playlist = dynamic_cast<MVNPlaylist*>(track)) {
            playlist->activeAt(local, out, i);
        } else if (auto* nested = dynamic_cast<MVNMultitrack*>(track)) {
            size_t first = out.size();
            nested->activeAt(local, out);
            for (size_t k = first; k < out.size(); ++k) out[k].track = i;
        } else if (position < track->getPlaytime()) {
            out.push_back({track, mTrackIds[i], local, i, -1});
        }
    }
}

void MVNMultitrack::_activeAt(int position, std::vector<MVNActiveClip>& out) const { activeAt(position, out); }

}  // namespace Morvane
