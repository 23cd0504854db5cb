#include "KeyInfo.h"

#include "core/MVNLog.h"

namespace codec {

namespace {
const char* kTag = "codec::KeyInfo";
}

KeyInfo::KeyInfo() = default;
KeyInfo::~KeyInfo() = default;

int KeyInfo::Add(int64_t pts, double time) {
    if (!mEntries.empty()) {
        const KeyEntry& last = *mEntries.back();
        if (pts < last.pts) {
            log_error(kTag, "pts:%d not increasing", static_cast<int>(pts));
            return -1;
        }
        if (pts == last.pts)
            log_warn(kTag, "same pts last:%d,cur:%d", static_cast<int>(last.pts), static_cast<int>(pts));
        else if (time <= last.time)
            log_warn(kTag, "not increasing time (%d,%f) last(%d,%f)", static_cast<int>(pts), time,
                     static_cast<int>(last.pts), last.time);
    }
    mEntries.push_back(std::unique_ptr<KeyEntry>(new KeyEntry{pts, time}));
    return 0;
}

int KeyInfo::Count() const { return static_cast<int>(mEntries.size()); }

const KeyEntry* KeyInfo::At(int index) const {
    if (index < 0 || index >= Count())
        return nullptr;
    return mEntries[static_cast<size_t>(index)].get();
}

void KeyInfo::Dump() const {
    for (const auto& e : mEntries)
        log_debug(kTag, "%d==>%f", static_cast<int>(e->pts), e->time);
}

}  // namespace codec
