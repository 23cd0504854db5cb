#include "transitions/MVNTransitionNames.h"

#include <Ogre.h>

#include <string>
#include <vector>

#include "engine/MVNOgreManager.h"
#include "timeline/MVNRepository.h"

namespace Morvane {

void MVNTransitionNames::registerMaterials() {
    MVNRepository* repository = MVNRepository::getSingleton();
    if (!repository->transitions().empty()) return;
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
    for (const std::string& name : names) repository->registerTransition(name, "material");
}

}  // namespace Morvane
