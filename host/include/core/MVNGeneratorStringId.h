#pragma once
#include <atomic>
#include <cstdint>
#include <string>

namespace Morvane {

// Unique names for everything that must be unique in the engine (textures,
// materials, scene nodes). Thread-safe.
class MVNGeneratorStringId {
public:
    static MVNGeneratorStringId* getSingleton();

    // prefix + "_" + a number never handed out before in this process. The
    // number follows the last '_', so no two prefixes can make the same name.
    std::string genStringId(const std::string& prefix);

private:
    MVNGeneratorStringId() = default;

    std::atomic<uint64_t> mNext{1};
};

}  // namespace Morvane
