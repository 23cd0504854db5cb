#include "filters/MVNFilterCatalogue.h"

#include <unordered_map>

#include "filters/MVNFilterCatalogue.inc"

namespace Morvane {

const MVNFilterUniform* MVNFilterCatalogueEntry::uniform(const std::string& uniformName) const {
    for (int i = 0; i < uniformCount; ++i) {
        if (uniformName == uniforms[i].name) return &uniforms[i];
    }
    return nullptr;
}

bool MVNFilterCatalogueEntry::isMask() const {
    switch (special) {
        case MVNFilterSpecial::MaskLiner:
        case MVNFilterSpecial::MaskDoubleLiner:
        case MVNFilterSpecial::MaskCircle:
        case MVNFilterSpecial::MaskRectangle:
        case MVNFilterSpecial::MaskHeart:
        case MVNFilterSpecial::MaskStar:
            return true;
        default:
            return false;
    }
}

const MVNFilterCatalogueEntry* MVNFilterCatalogue::find(const std::string& name) {
    // Built on first use; the table itself is constant.
    static const std::unordered_map<std::string, const MVNFilterCatalogueEntry*> index = [] {
        std::unordered_map<std::string, const MVNFilterCatalogueEntry*> byName;
        for (const MVNFilterCatalogueEntry& entry : kCatalogue) byName.emplace(entry.name, &entry);
        return byName;
    }();
    auto it = index.find(name);
    return it == index.end() ? nullptr : it->second;
}

int MVNFilterCatalogue::count() { return static_cast<int>(sizeof(kCatalogue) / sizeof(kCatalogue[0])); }

const MVNFilterCatalogueEntry& MVNFilterCatalogue::at(int index) { return kCatalogue[index]; }

}  // namespace Morvane
