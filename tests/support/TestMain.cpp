// Test entry: each test process gets its own working folder and HOME, so that
// marker files, engine configuration and caches of one test never reach another.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

#if defined(__SANITIZE_ADDRESS__)
// Under the address sanitizer nothing is unloaded. A library unloaded
// before the process ends (the engine's plugins, the GL driver the GL
// library drops with its display) loses its name in the leak report, and
// the suppressions (tests/sanitizers/lsan.supp) match the memory the GL
// driver keeps for the life of the process by library name. Defined in the
// program, this wins over the C library's for every library.
extern "C" int dlclose(void*) { return 0; }
#endif

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    namespace fs = std::filesystem;
    char tmpl[] = "/tmp/mvn-test-XXXXXX";
    const char* dir = ::mkdtemp(tmpl);
    std::string workdir = dir ? dir : "";
    if (!workdir.empty()) {
        fs::create_directories(workdir + "/home");
        ::setenv("HOME", (workdir + "/home").c_str(), 1);
        ::setenv("MVN_TEST_WORKDIR", workdir.c_str(), 1);
        fs::current_path(workdir);
    }
    int rc = RUN_ALL_TESTS();
    if (!workdir.empty() && !std::getenv("MVN_KEEP_TEST_DIRS")) {
        std::error_code ec;
        fs::current_path("/", ec);
        fs::remove_all(workdir, ec);
    }
    return rc;
}
