#include "transitions/MVNTransitionNames.h"

#include <Ogre.h>

#include <string>
#include <vector>

#include "engine/MVNOgreManager.h"
#include "timeline/MVNRepository.h"
#include "transitions/MVNTransitionCatalogue.h"

namespace Morvane {

void MVNTransitionNames::registerLibrary(MVNRepository* repository) {
    for (int i = 0; i < MVNTransitionCatalogue::count(); ++i) {
        const MVNTransitionCatalogueEntry& entry = MVNTransitionCatalogue::at(i);
        const char* title = entry.family;
        for (int f = 0; f < MVNTransitionCatalogue::familyCount(); ++f) {
            if (std::string(MVNTransitionCatalogue::family(f).name) == entry.family)
                title = MVNTransitionCatalogue::family(f).title;
        }
        repository->registerTransition(entry.name, title);
    }
}

void MVNTransitionNames::registerMaterials() {
    MVNRepository* repository = MVNRepository::getSingleton();
    for (const auto& [name, family] : repository->transitions()) {
        if (family == kOtherMaterials) return;
    }
    registerLibrary(repository);
    std::vector<std::string> names;
    MVNOgreManager::getSingleton()->callRenderableWait(
        [&names]() {
            Ogre::MaterialManager* materials = Ogre::MaterialManager::getSingletonPtr();
            if (materials == nullptr) return;
            for (auto it = materials->getResourceIterator(); it.hasMoreElements(); it.moveNext()) {
                // Scripts only: clones and materials made in code have no origin.
                if (!it.peekNextValue()->getOrigin().empty()) names.push_back(it.peekNextValue()->getName());
            }
        },
        "transitionNames");
    for (const std::string& name : names) {
        if (MVNTransitionCatalogue::find(name) == nullptr) repository->registerTransition(name, kOtherMaterials);
    }
}

}  // namespace Morvane
