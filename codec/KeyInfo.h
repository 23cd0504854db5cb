#pragma once
#include <cstdint>
#include <memory>
#include <vector>

namespace codec {

// One key frame of the video stream.
struct KeyEntry {
    int64_t pts;  // in the stream's time base
    double time;  // seconds, the stream's first timestamp not removed
};

// The key frames of a video stream in file order, read from the demuxer's
// index or found by reading the whole file. Owned by the decoder.
class KeyInfo {
public:
    KeyInfo();
    ~KeyInfo();

    // Appends an entry. A pts below the last is refused (-1); an equal pts or
    // a time that does not grow is kept with a warning. 0 when kept.
    int Add(int64_t pts, double time);
    int Count() const;
    // The entry at `index`, null out of range.
    const KeyEntry* At(int index) const;
    // Logs every entry as "pts==>time".
    void Dump() const;

private:
    std::vector<std::unique_ptr<KeyEntry>> mEntries;
};

}  // namespace codec
