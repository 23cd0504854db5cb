// Loading modules: refusals say why, the real module installs its
// factories, and a second load installs again without harm.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

#include "LogCapture.h"
#include "timeline/MVNModule.h"
#include "timeline/MVNRepository.h"
#include "MVNTestPaths.h"

using namespace Morvane;
using MorvaneTest::LogCapture;

namespace {
const char* const kTag = "Morvane::MVNModule";

// MORVANE_MODULE_DIR set for one test and restored after it.
class ScopedModuleDir {
public:
    explicit ScopedModuleDir(const std::string& dir) {
        const char* old = std::getenv("MORVANE_MODULE_DIR");
        mHad = old != nullptr;
        if (mHad) mOld = old;
        ::setenv("MORVANE_MODULE_DIR", dir.c_str(), 1);
    }
    ~ScopedModuleDir() {
        if (mHad) ::setenv("MORVANE_MODULE_DIR", mOld.c_str(), 1);
        else ::unsetenv("MORVANE_MODULE_DIR");
    }

private:
    bool mHad = false;
    std::string mOld;
};
}  // namespace

TEST(ModuleLoader, MissingOrNonElfFileIsRefusedWithItsPathAndReason) {
    LogCapture log;
    EXPECT_EQ(loadModule("/nonexistent/libNothing.so"), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "load module failed, file not found:/nonexistent/libNothing.so"));
    EXPECT_EQ(loadModule(""), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "load module failed, empty path"));
    std::filesystem::create_directories("adir.so");
    EXPECT_EQ(loadModule("adir.so"), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "load module failed, file not found:adir.so"));
    std::ofstream("fake.so") << std::string(256, 'x');
    LogCapture elf;
    EXPECT_EQ(loadModule("./fake.so"), -1);
    ASSERT_EQ(elf.countContaining("load module failed, "), 1);
    EXPECT_EQ(elf.countContaining("fake.so"), 1) << "the loader's text names the file";
    EXPECT_EQ(elf.countContaining("invalid ELF header"), 1);
}

TEST(ModuleLoader, SharedObjectWithoutInstallFunctionIsRefused) {
    // The host library itself is a shared object with no install function.
    std::string host = std::filesystem::path(MVN_TEST_MODULE_PATH).parent_path().string() + "/libMorvane.so";
    ASSERT_TRUE(std::filesystem::exists(host));
    LogCapture log;
    EXPECT_EQ(loadModule(host), -1);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "load module failed, no MorvaneModuleInstall in " + host));
}

TEST(ModuleLoader, RealModuleInstallsItsFactoriesAndLoadsTwice) {
    const std::string path = MVN_TEST_MODULE_PATH;
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "module not built: " << path;
    LogCapture log;
    ASSERT_EQ(loadModule(path), 0);
    auto* repo = MVNRepository::getSingleton();
    EXPECT_TRUE(repo->hasRenderSystem("ogreRenderSystem"));
    EXPECT_TRUE(repo->hasRenderTexture("ogreRenderTexture"));
    EXPECT_EQ(repo->serviceType("ogre.color"), MVN_SERVICE_PRODUCER);
    EXPECT_EQ(repo->serviceType("ogre.filter.sample"), MVN_SERVICE_FILTER);
    const std::string key = std::filesystem::canonical(path).string();
    EXPECT_TRUE(repo->hasModule(key));

    ASSERT_EQ(loadModule(path), 0) << "a second load installs again";
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, "Morvane::MVNRepository",
                        "render system ogreRenderSystem registered again, replacing the previous factory"));
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "module installed again:" + key));
    EXPECT_EQ(repo->modules().size(), 1u);
}

TEST(ModuleLoader, FindModuleLooksInTheOverrideFolderFirst) {
    std::filesystem::create_directories("mods");
    { std::ofstream("mods/libFoo.so") << "x"; }
    std::string dir = std::filesystem::absolute("mods").string();
    {
        ScopedModuleDir scoped(dir);
        EXPECT_EQ(defaultModuleDir(), dir);
        EXPECT_EQ(findModule("Foo"), dir + "/libFoo.so");
        EXPECT_EQ(findModule("libFoo.so"), dir + "/libFoo.so");
        EXPECT_EQ(findModule("NoSuchModule"), "");
    }
    EXPECT_EQ(findModule("./mods/libFoo.so"), dir + "/libFoo.so");
    EXPECT_EQ(findModule("./mods/libBar.so"), "");
    EXPECT_EQ(findModule(""), "");
}

TEST(ModuleLoader, FindModuleFindsTheBuiltModuleWithoutHelp) {
    const std::string path = MVN_TEST_MODULE_PATH;
    if (!std::filesystem::exists(path)) GTEST_SKIP() << "module not built: " << path;
    if (std::getenv("MORVANE_MODULE_DIR") != nullptr) GTEST_SKIP() << "MORVANE_MODULE_DIR overrides the search";
    EXPECT_EQ(std::filesystem::canonical(findModule("MVNOgre")), std::filesystem::canonical(path));
}
