#pragma once
#include <string>

namespace Morvane {

class MVNProducer;

// One thing to draw at a timeline position: ask `producer` for `position`
// (its own frame number, in-point and trims already applied).
struct MVNActiveClip {
    MVNProducer* producer = nullptr;
    std::string id;     // the producer's string id
    int position = 0;   // the position to pass to producer->getImage
    int track = 0;      // track of the tractor, 0 inside a lone playlist
    int entry = -1;     // entry of the playlist it comes from, -1 for none
};

}  // namespace Morvane
