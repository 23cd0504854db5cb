#include "scene/MVNOgreMaterialManager.h"

#include <Ogre.h>

#include "scene/GridsImpl.h"
#include "core/MVNGeneratorStringId.h"
#include "core/MVNLog.h"
#include "scene/MVNOgreMaterialGenerator.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNOgreMaterialManager";

// Built with the library, lives as long as it.
MVNOgreMaterialManager* const kInstance = MVNOgreMaterialManager::getSingleton();
}  // namespace

MVNOgreMaterialManager* MVNOgreMaterialManager::getSingleton() {
    static MVNOgreMaterialManager* instance = new MVNOgreMaterialManager();
    return instance;
}

Ogre::MaterialPtr MVNOgreMaterialManager::getByName(const std::string& name) {
    Ogre::MaterialManager& manager = Ogre::MaterialManager::getSingleton();
    bool known = cloneCounts.count(name) != 0 && manager.resourceExists(name, Ogre::RGN_DEFAULT);
    Ogre::MaterialPtr source = manager.getByName(name, Ogre::ResourceGroupManager::DEFAULT_RESOURCE_GROUP_NAME);
    if (!source) {
        // Also a name counted before whose material the engine has dropped:
        // the old count stays.
        log_error(kTag, "not find material %s", name.c_str());
        return Ogre::MaterialPtr();
    }
    std::string cloneName = MVNGeneratorStringId::getSingleton()->genStringId(name);
    if (known) {
        ++cloneCounts[name];
    } else {
        log_debug(kTag, "get clone %s from %s", cloneName.c_str(), name.c_str());
        cloneCounts[name] = 1;
    }
    // The number in this line tells that the name is counted, not how often
    // (getCloneCount says that); log readers know the line in this form.
    log_debug(kTag, "get clone %s from %s, count:%d", cloneName.c_str(), name.c_str(),
              static_cast<int>(cloneCounts.count(name)));
    // The clone stays in the source's group.
    return source->clone(cloneName);
}

Ogre::MaterialPtr MVNOgreMaterialManager::genByName(const std::string& name) {
    auto it = templates.find(name);
    if (it != templates.end() && it->second) {
        std::string cloneName = MVNGeneratorStringId::getSingleton()->genStringId(name);
        log_debug(kTag, "gen clone %s -> %s", name.c_str(), cloneName.c_str());
        return Ogre::MaterialPtr(it->second)->clone(cloneName);
    }
    Ogre::MaterialPtr generated;
    {
        MVNOgreMaterialGenerator generator(new GridsImpl());
        generated = generator.genMaterial(name);
    }
    templates[name] = generated;
    std::string cloneName = MVNGeneratorStringId::getSingleton()->genStringId(name);
    log_debug(kTag, "gen and clone %s -> %s", name.c_str(), cloneName.c_str());
    return generated->clone(cloneName);
}

void MVNOgreMaterialManager::removeAll() {
    Ogre::MaterialManager* manager = Ogre::MaterialManager::getSingletonPtr();
    while (!cloneCounts.empty()) {
        if (manager) manager->remove(cloneCounts.begin()->first, Ogre::RGN_DEFAULT);
        cloneCounts.erase(cloneCounts.begin());
    }
    while (!templates.empty()) {
        if (manager) manager->remove(templates.begin()->first, Ogre::RGN_DEFAULT);
        templates.erase(templates.begin());
    }
}

int MVNOgreMaterialManager::getCloneCount(const std::string& name) const {
    auto it = cloneCounts.find(name);
    return it == cloneCounts.end() ? 0 : it->second;
}

}  // namespace Morvane
