#include "timeline/MVNPlaylist.h"

#include <algorithm>

#include "timeline/MVNFactory.h"
#include "core/MVNLog.h"
#include "core/MVNAudioBlock.h"
#include "core/MVNFrame.h"
#include "services/MVNTransition.h"
#include "services/MVNTransitionAudio.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNPlaylist";
}  // namespace

struct MVNPlaylist::Item {
    MVNPlaylistEntryKind kind = MVN_ENTRY_CLIP;
    std::string id;       // clip id, or the mix's transition id (may be empty)
    int blankLength = 0;  // blanks
    int mixLength = 0;    // mixes
    int trimIn = 0;       // clips: frames given to the mix before
    int trimOut = 0;      // clips: frames given to the mix after
    std::unique_ptr<MVNProducer> blank;
    std::string audioId;  // mixes: the cross-fade of the two clips' sound
};

MVNPlaylist::MVNPlaylist(const MVNProfile& profile) : MVNTimelineProducer(profile, MVN_SERVICE_PLAYLIST, kTag) {
    setType(MVN_PRODUCER_PLAYLIST);
    block();
    setString("service", "playlist");
    setInt32("in", 0);
    setInt32("out", -1);
    setInt32("length", 0);
    unblock();
}

MVNPlaylist::~MVNPlaylist() {
    std::vector<MVNTransition*> transitions;
    std::vector<std::string> audios;
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        for (auto& item : mItems) {
            if (item->kind == MVN_ENTRY_MIX && !item->id.empty()) {
                if (MVNTransition* t = getTransitionById(item->id)) transitions.push_back(t);
            }
            if (!item->audioId.empty()) audios.push_back(item->audioId);
        }
        mItems.clear();
    }
    for (MVNTransition* t : transitions) t->disconnect();
    for (const std::string& id : audios) destroyService(id);
}

int MVNPlaylist::_length(const Item& item) const {
    switch (item.kind) {
        case MVN_ENTRY_BLANK: return item.blankLength;
        case MVN_ENTRY_MIX: return item.mixLength;
        case MVN_ENTRY_CLIP: {
            MVNProducer* p = getProducerById(item.id);
            return p != nullptr ? std::max(0, p->getPlaytime() - item.trimIn - item.trimOut) : 0;
        }
    }
    return 0;
}

int MVNPlaylist::append(const std::string& id) {
    MVNProducer* p = getProducerById(id);
    if (p == nullptr || p == this) {
        log_error(kTag, "%s append failed, no producer %s", getStringId().c_str(), id.c_str());
        return -1;
    }
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        auto item = std::make_unique<Item>();
        item->kind = MVN_ENTRY_CLIP;
        item->id = id;
        mItems.push_back(std::move(item));
    }
    // A clip that draws on the GPU shows from the moment it is built; it
    // stays hidden until the timeline reaches it (getImage shows it again).
    p->resetRender(-1);
    refresh();
    return 0;
}

int MVNPlaylist::appendBlank(int length) {
    if (length < 1) {
        log_error(kTag, "%s appendBlank failed, length %d", getStringId().c_str(), length);
        return -1;
    }
    auto blank = std::make_unique<MVNProducer>(mProfile);
    blank->setType(MVN_PRODUCER_BLANK);
    blank->block();
    blank->setString("service", "blank");
    blank->setInAndOut(0, length - 1);
    blank->setLength(length);
    blank->unblock();
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        auto item = std::make_unique<Item>();
        item->kind = MVN_ENTRY_BLANK;
        item->blankLength = length;
        item->blank = std::move(blank);
        mItems.push_back(std::move(item));
    }
    refresh();
    return 0;
}

int MVNPlaylist::mix(int index, int length, const std::string& transitionId) {
    MVNTransition* transition = nullptr;
    MVNProducer* a = nullptr;
    MVNProducer* b = nullptr;
    int startA = 0;
    int startB = 0;
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        int n = static_cast<int>(mItems.size());
        if (index < 0 || index + 1 >= n || mItems[index]->kind != MVN_ENTRY_CLIP ||
            mItems[index + 1]->kind != MVN_ENTRY_CLIP) {
            log_error(kTag, "%s mix failed, entries %d and %d aren't two clips", getStringId().c_str(), index,
                      index + 1);
            return -1;
        }
        Item& itemA = *mItems[index];
        Item& itemB = *mItems[index + 1];
        int lengthA = _length(itemA);
        int lengthB = _length(itemB);
        if (length < 1 || length > lengthA || length > lengthB) {
            log_error(kTag, "%s mix failed, length %d for clips of %d and %d", getStringId().c_str(), length, lengthA,
                      lengthB);
            return -1;
        }
        if (!transitionId.empty()) {
            transition = getTransitionById(transitionId);
            if (transition == nullptr) {
                log_error(kTag, "%s mix failed, no transition %s", getStringId().c_str(), transitionId.c_str());
                return -1;
            }
        }
        a = getProducerById(itemA.id);
        b = getProducerById(itemB.id);
        itemA.trimOut += length;
        itemB.trimIn += length;
        startA = a->getIn() + a->getPlaytime() - itemA.trimOut;
        startB = b->getIn();
        auto item = std::make_unique<Item>();
        item->kind = MVN_ENTRY_MIX;
        item->id = transitionId;
        item->mixLength = length;
        item->audioId = _createCrossfade();
        mItems.insert(mItems.begin() + index + 1, std::move(item));
    }
    if (transition != nullptr) {
        transition->setInAndOut(0, length - 1);
        transition->setLength(length);
        if (transition->connect(a, b, startA, startB) != 0) {
            log_error(kTag, "%s mix: transition %s refused its clips", getStringId().c_str(), transitionId.c_str());
        }
    }
    refresh();
    return 0;
}

std::string MVNPlaylist::_createCrossfade() {
    MVNProperties properties;
    properties.setString("service", "transition_audio");
    properties.setBoolean("fade", true);
    std::string id = createTransitionAudio(mProfile, properties);
    if (id.empty()) log_warn(kTag, "%s mix without cross-fade, no transition audio", getStringId().c_str());
    return id;
}

int MVNPlaylist::_removeLocked(int index, std::vector<MVNTransition*>& released) {
    int n = static_cast<int>(mItems.size());
    if (index < 0 || index >= n) return -1;
    Item& item = *mItems[index];
    if (item.kind == MVN_ENTRY_MIX) {
        // A mix always sits between two clips; they get their frames back.
        if (index > 0) mItems[index - 1]->trimOut -= item.mixLength;
        if (index + 1 < n) mItems[index + 1]->trimIn -= item.mixLength;
        if (!item.id.empty()) {
            if (MVNTransition* t = getTransitionById(item.id)) released.push_back(t);
        }
        if (!item.audioId.empty()) mReleasedAudio.push_back(item.audioId);
        mItems.erase(mItems.begin() + index);
        return 0;
    }
    if (item.kind == MVN_ENTRY_CLIP) {
        if (index + 1 < n && mItems[index + 1]->kind == MVN_ENTRY_MIX) _removeLocked(index + 1, released);
        if (index > 0 && mItems[index - 1]->kind == MVN_ENTRY_MIX) {
            _removeLocked(index - 1, released);
            --index;
        }
    }
    mItems.erase(mItems.begin() + index);
    return 0;
}

int MVNPlaylist::remove(int index) {
    std::vector<MVNTransition*> released;
    int rc = 0;
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        rc = _removeLocked(index, released);
    }
    if (rc != 0) {
        log_error(kTag, "%s remove failed, no entry %d", getStringId().c_str(), index);
        return -1;
    }
    for (MVNTransition* t : released) t->disconnect();
    _destroyReleasedAudio();
    refresh();
    return 0;
}

void MVNPlaylist::clear() {
    std::vector<MVNTransition*> released;
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        for (auto& item : mItems) {
            if (item->kind == MVN_ENTRY_MIX && !item->id.empty()) {
                if (MVNTransition* t = getTransitionById(item->id)) released.push_back(t);
            }
            if (!item->audioId.empty()) mReleasedAudio.push_back(item->audioId);
        }
        mItems.clear();
    }
    for (MVNTransition* t : released) t->disconnect();
    _destroyReleasedAudio();
    refresh();
}

int MVNPlaylist::count() const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    return static_cast<int>(mItems.size());
}

MVNProducer* MVNPlaylist::getClip(int index) const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    if (index < 0 || index >= static_cast<int>(mItems.size())) return nullptr;
    const Item& item = *mItems[index];
    switch (item.kind) {
        case MVN_ENTRY_BLANK: return item.blank.get();
        case MVN_ENTRY_MIX: return item.id.empty() ? nullptr : getProducerById(item.id);
        case MVN_ENTRY_CLIP: return getProducerById(item.id);
    }
    return nullptr;
}

void MVNPlaylist::_layout(std::vector<MVNPlaylistEntry>& out) const {
    int start = 0;
    for (const auto& item : mItems) {
        MVNPlaylistEntry e;
        e.kind = item->kind;
        e.id = item->id;
        e.start = start;
        e.length = _length(*item);
        if (item->kind == MVN_ENTRY_CLIP) {
            MVNProducer* p = getProducerById(item->id);
            e.in = (p != nullptr ? p->getIn() : 0) + item->trimIn;
        }
        start += e.length;
        out.push_back(e);
    }
}

std::vector<MVNPlaylistEntry> MVNPlaylist::entries() const {
    std::vector<MVNPlaylistEntry> out;
    std::lock_guard<std::recursive_mutex> guard(mLock);
    _layout(out);
    return out;
}

bool MVNPlaylist::entryAt(int position, MVNPlaylistEntry& entry, int& offset) const {
    if (position < 0) return false;
    std::lock_guard<std::recursive_mutex> guard(mLock);
    int start = 0;
    for (const auto& item : mItems) {
        int length = _length(*item);
        if (position < start + length) {
            entry.kind = item->kind;
            entry.id = item->id;
            entry.start = start;
            entry.length = length;
            entry.in = 0;
            if (item->kind == MVN_ENTRY_CLIP) {
                MVNProducer* p = getProducerById(item->id);
                entry.in = (p != nullptr ? p->getIn() : 0) + item->trimIn;
            }
            offset = position - start;
            return true;
        }
        start += length;
    }
    return false;
}

void MVNPlaylist::activeAt(int position, std::vector<MVNActiveClip>& out, int track) const {
    if (position < 0) return;
    std::lock_guard<std::recursive_mutex> guard(mLock);
    int start = 0;
    int n = static_cast<int>(mItems.size());
    for (int i = 0; i < n; ++i) {
        const Item& item = *mItems[i];
        int length = _length(item);
        if (position >= start + length) {
            start += length;
            continue;
        }
        int offset = position - start;
        if (item.kind == MVN_ENTRY_CLIP) {
            MVNProducer* p = getProducerById(item.id);
            if (p != nullptr) out.push_back({p, item.id, p->getIn() + item.trimIn + offset, track, i});
        } else if (item.kind == MVN_ENTRY_MIX && i > 0 && i + 1 < n) {
            const Item& itemA = *mItems[i - 1];
            const Item& itemB = *mItems[i + 1];
            MVNProducer* a = getProducerById(itemA.id);
            MVNProducer* b = getProducerById(itemB.id);
            if (a == nullptr || b == nullptr) return;
            int startA = a->getIn() + a->getPlaytime() - itemA.trimOut;
            int startB = b->getIn();
            MVNTransition* t = item.id.empty() ? nullptr : getTransitionById(item.id);
            if (t != nullptr) {
                // Clip lengths are live; the transition follows them.
                t->setStarts(startA, startB);
                out.push_back({t, item.id, offset, track, i});
            } else {
                out.push_back({a, itemA.id, startA + offset, track, i});
                out.push_back({b, itemB.id, startB + offset, track, i});
            }
        }
        return;
    }
}

int MVNPlaylist::totalLength() const {
    std::lock_guard<std::recursive_mutex> guard(mLock);
    int total = 0;
    for (const auto& item : mItems) total += _length(*item);
    return total;
}

void MVNPlaylist::refresh() {
    int total = totalLength();
    block();
    setInt32("in", 0);
    setInt32("out", total - 1);
    setInt32("length", total);
    unblock();
}

void MVNPlaylist::_activeAt(int position, std::vector<MVNActiveClip>& out) const { activeAt(position, out, 0); }

void MVNPlaylist::_destroyReleasedAudio() {
    std::vector<std::string> ids;
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        ids.swap(mReleasedAudio);
    }
    for (const std::string& id : ids) destroyService(id);
}

int MVNPlaylist::_getAudio(int position, void* converter, MVNFrame** frame) {
    if (frame == nullptr || position < 0) return -1;
    // What sounds is found under the lock and asked for without it: a clip
    // may take its time decoding.
    MVNProducer* a = nullptr;
    MVNProducer* b = nullptr;
    int positionA = 0;
    int positionB = 0;
    int offset = 0;
    int mixLength = 0;
    std::string audioId;
    {
        std::lock_guard<std::recursive_mutex> guard(mLock);
        int start = 0;
        int n = static_cast<int>(mItems.size());
        for (int i = 0; i < n; ++i) {
            const Item& item = *mItems[i];
            int length = _length(item);
            if (position >= start + length) {
                start += length;
                continue;
            }
            offset = position - start;
            if (item.kind == MVN_ENTRY_CLIP) {
                a = getProducerById(item.id);
                if (a != nullptr) positionA = a->getIn() + item.trimIn + offset;
            } else if (item.kind == MVN_ENTRY_MIX && i > 0 && i + 1 < n) {
                const Item& itemA = *mItems[i - 1];
                const Item& itemB = *mItems[i + 1];
                a = getProducerById(itemA.id);
                b = getProducerById(itemB.id);
                if (a != nullptr) positionA = a->getIn() + a->getPlaytime() - itemA.trimOut + offset;
                if (b != nullptr) positionB = b->getIn() + offset;
                mixLength = item.mixLength;
                audioId = item.audioId;
            }
            break;
        }
    }
    const int samples = MVNAudioBlock::samplesOf(mProfile, position);
    MVNFrame* soundA = nullptr;
    MVNFrame* soundB = nullptr;
    if (a != nullptr && a->getAudio(positionA, converter, &soundA) != 0) soundA = nullptr;
    if (b != nullptr && b->getAudio(positionB, converter, &soundB) != 0) soundB = nullptr;
    if (soundA == nullptr && soundB == nullptr) return -1;
    MVNFrame* out = nullptr;
    if (b != nullptr) {
        MVNTransitionAudio* fade = getTransitionAudioById(audioId);
        if (fade != nullptr) {
            out = fade->process(offset, mixLength, samples, soundA, soundB);
        } else {
            // Without its cross-fade a mix sounds like what it shows: both.
            out = MVNAudioBlock::pullSilence(samples);
            MVNAudioBlock::mixInto(out, soundA, 1.0f);
            MVNAudioBlock::mixInto(out, soundB, 1.0f);
            MVNFrame::pushBackPool(soundA);
            MVNFrame::pushBackPool(soundB);
        }
    } else {
        // Fitted to the playlist's own block, which may differ by a sample.
        out = MVNAudioBlock::pullSilence(samples);
        MVNAudioBlock::mixInto(out, soundA, 1.0f);
        MVNFrame::pushBackPool(soundA);
    }
    if (out == nullptr) return -1;
    *frame = out;
    return 0;
}

}  // namespace Morvane
