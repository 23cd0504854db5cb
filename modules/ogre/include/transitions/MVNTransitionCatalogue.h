#pragma once
#include <string>

#include "MVNOgreExport.h"

namespace Morvane {

// A uniform of a library transition; the property of the same name sets it.
struct MVNTransitionUniform {
    const char* name;
    double defaultValue;  // what the material starts with
    double minimum;       // the range the transition is designed for
    double maximum;
};

// A transition of the library: its material has the same name.
struct MVN_OGRE_API MVNTransitionCatalogueEntry {
    const char* name;
    const char* family;
    const MVNTransitionUniform* uniforms;
    int uniformCount;

    const MVNTransitionUniform* uniform(const std::string& uniformName) const;
};

// A family of transitions and its title for listings.
struct MVNTransitionFamily {
    const char* name;
    const char* title;
};

// The transition library, generated from media/transitions/catalogue.py.
class MVN_OGRE_API MVNTransitionCatalogue {
public:
    // nullptr for a name the library doesn't hold (names are case-sensitive).
    static const MVNTransitionCatalogueEntry* find(const std::string& name);
    static int count();
    // In catalogue order, 0 <= index < count().
    static const MVNTransitionCatalogueEntry& at(int index);
    static int familyCount();
    static const MVNTransitionFamily& family(int index);
};

}  // namespace Morvane
