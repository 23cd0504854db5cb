// Test entry: each test process gets its own working folder and HOME, so that
// marker files, engine configuration and caches of one test never reach another.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <string>
#include <unistd.h>

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
