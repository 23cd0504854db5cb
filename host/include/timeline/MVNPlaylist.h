#pragma once
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "timeline/MVNActiveClip.h"
#include "timeline/MVNTimelineProducer.h"

namespace Morvane {

class MVNTransition;

enum MVNPlaylistEntryKind : int {
    MVN_ENTRY_CLIP = 0,
    MVN_ENTRY_BLANK = 1,
    MVN_ENTRY_MIX = 2,  // the overlap of two neighbouring clips
};

// An entry as the playlist lays it out now.
struct MVNPlaylistEntry {
    MVNPlaylistEntryKind kind = MVN_ENTRY_CLIP;
    std::string id;  // clip or transition id; empty for a blank or a mix without transition
    int start = 0;   // first playlist position of the entry
    int length = 0;  // positions it covers
    int in = 0;      // the clip's own position at `start` (clips only)
};

// Clips one after the other ("playlist"). Clips are registered producers
// named by string id; a clip covers its playtime less what mixes take of it.
// Blanks are gaps that draw nothing. mix(i, n) overlaps the last n frames of
// clip i with the first n of clip i + 1 in an entry of its own, run by a
// transition when one is given (otherwise both clips show, the later one
// above); the playlist gets n frames shorter.
//
// The sound of a position is the clip's there; in a mix the two clips
// cross-fade through a "transition_audio" the playlist makes for the mix
// (and destroys with it), whether a transition draws the picture or not.
//
// Positions run from 0 to getPlaytime() - 1 after refresh(), which every
// edit calls. Lengths are read from the clips live, so a trimmed clip moves
// what follows it. Thread-safe.
class MVNPlaylist : public MVNTimelineProducer {
public:
    explicit MVNPlaylist(const MVNProfile& profile);
    ~MVNPlaylist() override;

    // -1 when there is no registered producer of that id (logged).
    int append(const std::string& id);
    // -1 for a length below 1.
    int appendBlank(int length);
    // -1 when entries i and i + 1 aren't both clips, length is below 1 or
    // longer than either clip, or `transitionId` names no transition.
    int mix(int index, int length, const std::string& transitionId = std::string());
    // Removes entry i; a mix next to a removed clip goes with it and gives
    // its frames back to the other clip. -1 for a bad index.
    int remove(int index);
    // Removes every entry; the clips themselves stay registered.
    void clear();
    int count() const;
    // The producer of entry i: the clip, a blank producer (isBlank()), or
    // the mix's transition; null for a mix without one or a bad index.
    MVNProducer* getClip(int index) const;
    std::vector<MVNPlaylistEntry> entries() const;

    // The entry that covers `position` and the offset into it. False before
    // the first and after the last entry.
    bool entryAt(int position, MVNPlaylistEntry& entry, int& offset) const;
    // Appends to `out` what draws at `position`: nothing for a blank, the
    // clip, the transition of a mix, or both clips of a mix without one.
    void activeAt(int position, std::vector<MVNActiveClip>& out, int track = 0) const;
    // Sum of the entries' lengths as they are now.
    int totalLength() const;
    // Sets "in", "out" and "length" from the entries, and the transitions'
    // start positions.
    void refresh();

    // The sound of `position` (MVNAudioBlock); -1 where nothing sounds.
    int _getAudio(int position, void* converter, MVNFrame** frame) override;

protected:
    void _activeAt(int position, std::vector<MVNActiveClip>& out) const override;

private:
    struct Item;
    int _length(const Item& item) const;
    int _removeLocked(int index, std::vector<MVNTransition*>& released);
    void _layout(std::vector<MVNPlaylistEntry>& out) const;
    // A cross-fade for a new mix; empty when none could be made (logged).
    std::string _createCrossfade();
    // Destroys the cross-fades of mixes removed under the lock.
    void _destroyReleasedAudio();

    std::vector<std::unique_ptr<Item>> mItems;
    std::vector<std::string> mReleasedAudio;
    mutable std::recursive_mutex mLock;
};

}  // namespace Morvane
