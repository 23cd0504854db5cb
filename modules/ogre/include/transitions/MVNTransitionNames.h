#pragma once
#include "MVNOgreExport.h"

namespace Morvane {

// Tells the host's repository which transition names a project may use, so
// that a misspelt one is refused with its place in the file rather than
// drawn as nothing. Without a catalogue of named transitions every material
// script the engine has read counts: a transition is a material.
class MVN_OGRE_API MVNTransitionNames {
public:
    // Once the engine runs (its scripts are read): registers each script
    // material under the family "material", unless names are registered
    // already. Step "transitionNames".
    static void registerMaterials();
};

}  // namespace Morvane
