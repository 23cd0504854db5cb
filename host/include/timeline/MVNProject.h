#pragma once
#include <string>
#include <vector>

#include "core/MVNProfile.h"

namespace Morvane {

// A timeline built from a project file: the profile, the tractor that holds
// one playlist per track, and every service made for it (destroyed by
// MVNProjectLoader::unload, newest first).
struct MVNProject {
    std::string path;          // the project file, absolute
    std::string folder;        // its folder, where relative paths start
    MVNProfile profile;
    std::string tractorId;
    std::vector<std::string> serviceIds;
    // Folders the renderer must search for resources named relatively
    // ("pictures/beach.png"): the project's folder first.
    std::vector<std::string> resourceLocations;
    int length = 0;  // positions 0 .. length - 1
    // Some clip has sound: an output that can hold it should.
    bool sound = false;
};

}  // namespace Morvane
