#include "timeline/MVNTractor.h"

#include <algorithm>

#include "timeline/MVNFactory.h"
#include "core/MVNLog.h"
#include "timeline/MVNPlaylist.h"
#include "services/MVNTransitionAudio.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNTractor";
}  // namespace

MVNTractor::MVNTractor(const MVNProfile& profile) : MVNMultitrack(profile, MVN_SERVICE_TRACTOR) {
    setType(MVN_PRODUCER_TRACTOR);
    block();
    setString("service", "tractor");
    unblock();
}

MVNTractor::~MVNTractor() = default;

void MVNTractor::clear() {
    {
        std::lock_guard<std::recursive_mutex> guard(mTracksLock);
        mTrackIds.clear();
        mTransitionAudioIds.clear();
    }
    refresh();
}

int MVNTractor::count() const {
    std::lock_guard<std::recursive_mutex> guard(mTracksLock);
    return static_cast<int>(mTrackIds.size());
}

MVNProducer* MVNTractor::getTrack(int index) const {
    std::lock_guard<std::recursive_mutex> guard(mTracksLock);
    if (index < 0 || index >= static_cast<int>(mTrackIds.size())) return nullptr;
    return getProducerById(mTrackIds[index]);
}

int MVNTractor::setTrack(const std::string& id, int index) {
    MVNProducer* p = getProducerById(id);
    if (p == nullptr || p == this) {
        log_error(kTag, "%s setTrack failed, no producer %s", getStringId().c_str(), id.c_str());
        return -1;
    }
    bool appended = false;
    {
        std::lock_guard<std::recursive_mutex> guard(mTracksLock);
        appended = index < 0 || index >= static_cast<int>(mTrackIds.size());
        if (appended)
            mTrackIds.push_back(id);
        else
            mTrackIds[index] = id;
    }
    if (!appended) {
        refresh();
        return 0;
    }
    // A track added can only lengthen the tractor: refreshing every track
    // on each append made building N tracks cost N * N.
    if (auto* playlist = dynamic_cast<MVNPlaylist*>(p)) playlist->refresh();
    if (auto* tractor = dynamic_cast<MVNTractor*>(p)) tractor->refresh();
    const int longest = std::max(getInt32("length", 0), p->getPlaytime());
    block();
    setInt32("in", 0);
    setInt32("out", longest - 1);
    setInt32("length", longest);
    unblock();
    return 0;
}

int MVNTractor::plantTransitionAudio(const std::string& id, int a, int b) {
    MVNTransitionAudio* t = getTransitionAudioById(id);
    if (t == nullptr) {
        log_error(kTag, "%s plantTransitionAudio failed, no transition audio %s", getStringId().c_str(), id.c_str());
        return -1;
    }
    std::lock_guard<std::recursive_mutex> guard(mTracksLock);
    int n = static_cast<int>(mTrackIds.size());
    if (a < 0 || b < 0 || a >= n || b >= n) {
        log_error(kTag, "%s plantTransitionAudio failed, tracks %d and %d of %d", getStringId().c_str(), a, b, n);
        return -1;
    }
    t->setTracks(a, b);
    mTransitionAudioIds.push_back(id);
    return 0;
}

void MVNTractor::refresh() {
    int longest = 0;
    for (MVNProducer* track : tracks()) {
        if (track == nullptr) continue;
        if (auto* playlist = dynamic_cast<MVNPlaylist*>(track)) playlist->refresh();
        if (auto* tractor = dynamic_cast<MVNTractor*>(track)) tractor->refresh();
        longest = std::max(longest, track->getPlaytime());
    }
    block();
    setInt32("in", 0);
    setInt32("out", longest - 1);
    setInt32("length", longest);
    unblock();
}

}  // namespace Morvane
