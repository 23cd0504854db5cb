#pragma once
#include <vector>

#include "timeline/MVNActiveClip.h"
#include "timeline/MVNActiveSet.h"
#include "services/MVNProducer.h"

namespace Morvane {

// A timeline as a producer (playlists, multitracks): its picture is the
// clips active at a position, each drawing itself into the scene, so its
// own frames are blank.
class MVNTimelineProducer : public MVNProducer {
public:
    // Draws the active clips at `position` (see MVNActiveSet).
    void render(int position) override;
    void resetRender(int position) override;
    // render, then a blank frame: the picture lies in the scene.
    int _getImage(int position, MVNFrame** frame) override;

protected:
    // `tag` heads the timeline's log lines.
    MVNTimelineProducer(const MVNProfile& profile, MVNServiceType type, const char* tag);

    // Appends to `out` what draws at `position`.
    virtual void _activeAt(int position, std::vector<MVNActiveClip>& out) const = 0;

private:
    const char* const mTag;
    // Owned by the render path; render() is called from one thread at a time.
    MVNActiveSet mDrawn;
    std::vector<MVNActiveClip> mScratch;
};

}  // namespace Morvane
