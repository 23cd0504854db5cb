#include "timeline/MVNModule.h"

#include <dlfcn.h>
#include <sys/stat.h>

#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <exception>

#include "core/MVNLog.h"
#include "timeline/MVNRepository.h"
#include "core/MVNUtils.h"

namespace Morvane {

namespace {

const char* const kTag = "Morvane::MVNModule";
const char* const kInstallSymbol = "MorvaneModuleInstall";

using InstallFunction = int (*)(MVNRepository*);

bool isFile(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISREG(st.st_mode);
}

bool isDir(const std::string& path) {
    struct stat st {};
    return ::stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

std::string envModuleDir() {
    const char* env = std::getenv("MORVANE_MODULE_DIR");
    return env != nullptr ? std::string(env) : std::string();
}

std::string buildModuleDir() {
#ifdef MVN_BUILD_MODULE_DIR
    return MVN_BUILD_MODULE_DIR;
#else
    return std::string();
#endif
}

std::string installModuleDir() {
#ifdef MVN_INSTALL_MODULE_DIR
    return MVN_INSTALL_MODULE_DIR;
#else
    return std::string();
#endif
}

// The folder libMorvane itself was loaded from. The build tree keeps the
// modules beside it, an installed (or moved) tree in morvane/modules below it.
std::string ownDir() {
    Dl_info info{};
    if (::dladdr(reinterpret_cast<void*>(&findModule), &info) == 0 || info.dli_fname == nullptr) return std::string();
    std::string path = ports::path::abspath(info.dli_fname);
    size_t slash = path.find_last_of('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash);
}

std::string ownModuleDir() {
    std::string dir = ownDir();
    return dir.empty() ? dir : dir + "/morvane/modules";
}

}  // namespace

int loadModule(const std::string& path) {
    if (path.empty()) {
        log_error(kTag, "load module failed, empty path");
        return -1;
    }
    if (!isFile(path)) {
        log_error(kTag, "load module failed, file not found:%s", path.c_str());
        return -1;
    }
    // One key per file, however it was named: links and relative paths
    // resolve to the same module.
    std::error_code ec;
    std::string key = std::filesystem::weakly_canonical(std::filesystem::absolute(path), ec).string();
    if (ec) key = ports::path::abspath(path.c_str());
    ::dlerror();
    void* handle = ::dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = ::dlerror();
        log_error(kTag, "load module failed, %s", reason != nullptr ? reason : "unknown dlopen error");
        return -1;
    }
    ::dlerror();
    void* symbol = ::dlsym(handle, kInstallSymbol);
    if (symbol == nullptr) {
        log_error(kTag, "load module failed, no %s in %s", kInstallSymbol, path.c_str());
        ::dlclose(handle);
        return -1;
    }
    MVNRepository* repository = MVNRepository::getSingleton();
    auto install = reinterpret_cast<InstallFunction>(symbol);
    int rc = -1;
    try {
        rc = install(repository);
    } catch (const std::exception& e) {
        log_error(kTag, "load module failed, install of %s threw: %s", path.c_str(), e.what());
        return -1;
    } catch (...) {
        log_error(kTag, "load module failed, install of %s threw", path.c_str());
        return -1;
    }
    // From here on the library stays loaded even on failure: a partial
    // install may have left factories that point into it.
    if (rc != 0) {
        log_error(kTag, "load module failed, install of %s returned %d", path.c_str(), rc);
        return -1;
    }
    if (repository->hasModule(key)) {
        // Loaded before: the first handle keeps the library, this one only
        // raised the count.
        ::dlclose(handle);
        log_info(kTag, "module installed again:%s", key.c_str());
    } else {
        repository->addModule(key, handle);
        log_info(kTag, "module loaded:%s", key.c_str());
    }
    return 0;
}

std::string defaultModuleDir() {
    std::string env = envModuleDir();
    if (!env.empty()) return env;
    std::string own = ownModuleDir();
    if (!own.empty() && isDir(own)) return own;
    std::string build = buildModuleDir();
    if (!build.empty() && isDir(build)) return build;
    return installModuleDir();
}

std::string findModule(const std::string& name) {
    if (name.empty()) return std::string();
    if (name.find('/') != std::string::npos) return isFile(name) ? ports::path::abspath(name.c_str()) : std::string();
    std::string file = name;
    auto endsWith = [](const std::string& s, const std::string& tail) {
        return s.size() >= tail.size() && s.compare(s.size() - tail.size(), tail.size(), tail) == 0;
    };
    if (!endsWith(file, ".so") && file.find(".so.") == std::string::npos) {
        if (file.compare(0, 3, "lib") != 0) file = "lib" + file;
        file += ".so";
    }
    for (const std::string& dir : {envModuleDir(), ownModuleDir(), buildModuleDir(), ownDir(), installModuleDir()}) {
        if (dir.empty()) continue;
        std::string candidate = dir + "/" + file;
        if (isFile(candidate)) return candidate;
    }
    return std::string();
}

}  // namespace Morvane
