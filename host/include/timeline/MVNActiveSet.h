#pragma once
#include <vector>

#include "timeline/MVNActiveClip.h"

namespace Morvane {

// Draws a timeline position from its active clips and remembers them, so
// that a clip leaving the timeline is hidden (resetRender) and told
// (onClipEnd), and one entering is activated first. Used by tractors,
// playlists and consumers; not thread-safe, one owner drives it.
class MVNActiveSet {
public:
    // Activates the new clips, draws every clip of `now` in order (getImage,
    // the frame goes back to the pool) and retires the clips that left.
    void draw(int position, const std::vector<MVNActiveClip>& now);
    // Retires every clip still remembered.
    void reset(int position);
    const std::vector<MVNActiveClip>& current() const { return mCurrent; }

private:
    std::vector<MVNActiveClip> mCurrent;
};

}  // namespace Morvane
