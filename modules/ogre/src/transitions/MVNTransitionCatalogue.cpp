#include "transitions/MVNTransitionCatalogue.h"

#include <unordered_map>

#include "transitions/MVNTransitionCatalogue.inc"

namespace Morvane {

const MVNTransitionUniform* MVNTransitionCatalogueEntry::uniform(const std::string& uniformName) const {
    for (int i = 0; i < uniformCount; ++i) {
        if (uniformName == uniforms[i].name) return &uniforms[i];
    }
    return nullptr;
}

const MVNTransitionCatalogueEntry* MVNTransitionCatalogue::find(const std::string& name) {
    // Built on first use; the table itself is constant.
    static const std::unordered_map<std::string, const MVNTransitionCatalogueEntry*> index = [] {
        std::unordered_map<std::string, const MVNTransitionCatalogueEntry*> byName;
        for (const MVNTransitionCatalogueEntry& entry : kCatalogue) byName.emplace(entry.name, &entry);
        return byName;
    }();
    auto it = index.find(name);
    return it == index.end() ? nullptr : it->second;
}

int MVNTransitionCatalogue::count() { return static_cast<int>(sizeof(kCatalogue) / sizeof(kCatalogue[0])); }

const MVNTransitionCatalogueEntry& MVNTransitionCatalogue::at(int index) { return kCatalogue[index]; }

int MVNTransitionCatalogue::familyCount() { return static_cast<int>(sizeof(kFamilies) / sizeof(kFamilies[0])); }

const MVNTransitionFamily& MVNTransitionCatalogue::family(int index) { return kFamilies[index]; }

}  // namespace Morvane
