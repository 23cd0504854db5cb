#pragma once
#include <map>
#include <string>

#include "MVNOgreExport.h"
#include "MVNOgreForward.h"

namespace Morvane {

// Hands out private clones of materials, so that two clips drawn with the
// same script can hold different uniform values at once: nothing ever draws
// with a source material itself. Keeps how often each source was cloned and,
// for materials generated at run time, the generated template. The caller
// owns a clone and removes it from the engine when done; this class never
// does. Render thread only, hence no lock.
class MVN_OGRE_API MVNOgreMaterialManager {
public:
    static MVNOgreMaterialManager* getSingleton();

    // A clone of the script material `name` under a unique name; null with
    // "not find material %s" when the engine doesn't know it.
    Ogre::MaterialPtr getByName(const std::string& name);
    // A clone of the generated material `name`; the template and its
    // programs are generated at the first request and kept.
    Ogre::MaterialPtr genByName(const std::string& name);
    // Removes the sources and templates from the engine and forgets them
    // (the cache of templates is emptied here only); clones stay.
    void removeAll();

    // How often `name` has been cloned; 0 for a name never cloned.
    int getCloneCount(const std::string& name) const;
    bool hasTemplate(const std::string& name) const { return templates.count(name) != 0; }

private:
    MVNOgreMaterialManager() = default;
    MVNOgreMaterialManager(const MVNOgreMaterialManager&) = delete;
    MVNOgreMaterialManager& operator=(const MVNOgreMaterialManager&) = delete;

    std::map<std::string, int> cloneCounts;                             // source name -> clones made
    std::map<std::string, std::shared_ptr<Ogre::Material>> templates;  // generated name -> template
};

}  // namespace Morvane
