#include "timeline/MVNMultitrack.h"

#include "core/MVNAudioBlock.h"
#include "core/MVNFrame.h"
#include "timeline/MVNFactory.h"
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

int MVNMultitrack::_getAudio(int position, void* converter, MVNFrame** frame) {
    if (frame == nullptr || position < 0) return -1;
    std::vector<MVNProducer*> sounding;
    {
        std::lock_guard<std::recursive_mutex> guard(mTracksLock);
        for (const std::string& id : mTrackIds) {
            MVNProducer* track = getProducerById(id);
            if (track == nullptr) continue;
            // A lone clip as a track sounds for its playtime; timelines know
            // their own ends.
            bool timeline = dynamic_cast<MVNTimelineProducer*>(track) != nullptr;
            if (timeline || position < track->getPlaytime()) sounding.push_back(track);
        }
    }
    // Every track sounds at once: the tractor's sound is their sum.
    MVNFrame* out = nullptr;
    for (MVNProducer* track : sounding) {
        MVNFrame* sound = nullptr;
        if (track->getAudio(track->getIn() + position, converter, &sound) != 0 || sound == nullptr) continue;
        if (out == nullptr) out = MVNAudioBlock::pullSilence(MVNAudioBlock::samplesOf(mProfile, position));
        MVNAudioBlock::mixInto(out, sound, 1.0f);
        MVNFrame::pushBackPool(sound);
    }
    if (out == nullptr) return -1;
    *frame = out;
    return 0;
}

}  // namespace Morvane
