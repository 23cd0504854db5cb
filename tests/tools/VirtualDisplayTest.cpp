// The private X server of the tools when the standard descriptors are not
// what a program expects: a tool started with its output closed still draws.
#include <gtest/gtest.h>

#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>

#include "MVNVirtualDisplay.h"

using namespace Morvane;

namespace {

// In a child, so that the closed descriptors are its own: with 1 and 3
// free, the pipe Xvfb reports its display on takes exactly those numbers,
// the write end on 3, where Xvfb is told to write.
int startWithDescriptorsClosed(const std::vector<int>& closed) {
    pid_t pid = ::fork();
    if (pid == 0) {
        for (int fd : closed) ::close(fd);
        ::unsetenv("DISPLAY");
        MVNVirtualDisplay display;
        const int rc = display.start(64, 64);
        const bool named = std::getenv("DISPLAY") != nullptr && display.name() == std::getenv("DISPLAY");
        display.stop();
        ::_exit(rc == 0 && named ? 0 : 1);
    }
    int status = 0;
    ::waitpid(pid, &status, 0);
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

TEST(VirtualDisplay, StartsWhateverStandardDescriptorsAreClosed) {
    for (const std::vector<int>& closed : {std::vector<int>{}, {1, 3}, {0, 1, 2, 3}, {0, 3}, {2, 3}}) {
        std::string which;
        for (int fd : closed) which += std::to_string(fd) + " ";
        EXPECT_EQ(startWithDescriptorsClosed(closed), 0) << "closed: " << which;
    }
}

}  // namespace
