#pragma once
#include "MVNOgreExport.h"

namespace Morvane {

class MVNRepository;

// Tells the host's repository which transition names a project may use, so
// that a misspelt one is refused with its place in the file rather than
// drawn as nothing.
class MVN_OGRE_API MVNTransitionNames {
public:
    // The family under which the engine's other material scripts count:
    // a project may name one (a transition is a material), but listings of
    // the library leave them out, as most are filters.
    static constexpr const char* kOtherMaterials = "material";

    // The library's transitions in catalogue order, each under its
    // family's title ("Fades", "Wipes", ...); needs no engine, so the module
    // does it as it installs and a listing or a project file sees them
    // before anything is drawn.
    static void registerLibrary(MVNRepository* repository);
    // Once the engine runs (its scripts are read), unless done already: the
    // library, then every other script material under kOtherMaterials.
    // Step "transitionNames".
    static void registerMaterials();
};

}  // namespace Morvane
