#pragma once
// A virtual X display for GPU tests. The engine's GL windows need an X
// server; when DISPLAY is unset (a plain ctest run outside `make test`) this
// environment starts a private Xvfb for the test process and stops it at the
// end. A DISPLAY that is set is used as it is.
#include <gtest/gtest.h>

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/types.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <string>

namespace MorvaneTest {

class XvfbEnvironment : public ::testing::Environment {
public:
    void SetUp() override {
        const char* display = std::getenv("DISPLAY");
        if (display && *display) return;
        int fds[2];
        if (::pipe(fds) != 0) return;
        pid_t pid = ::fork();
        if (pid == 0) {
            ::close(fds[0]);
            std::string fd = std::to_string(fds[1]);
            int devnull = ::open("/dev/null", O_WRONLY);
            if (devnull >= 0) {
                ::dup2(devnull, 1);
                ::dup2(devnull, 2);
            }
            ::execlp("Xvfb", "Xvfb", "-displayfd", fd.c_str(), "-screen", "0", "1920x1080x24", "-nolisten", "tcp",
                     static_cast<char*>(nullptr));
            ::_exit(127);
        }
        ::close(fds[1]);
        if (pid < 0) {
            ::close(fds[0]);
            return;
        }
        mPid = pid;
        // Xvfb writes its display number once it accepts connections.
        std::string number;
        pollfd p{fds[0], POLLIN, 0};
        while (::poll(&p, 1, 15000) > 0) {
            char c;
            if (::read(fds[0], &c, 1) != 1 || c == '\n') break;
            number.push_back(c);
        }
        ::close(fds[0]);
        if (number.empty()) {
            TearDown();
            return;
        }
        ::setenv("DISPLAY", (":" + number).c_str(), 1);
    }

    void TearDown() override {
        if (mPid <= 0) return;
        ::kill(mPid, SIGTERM);
        ::waitpid(mPid, nullptr, 0);
        mPid = -1;
        ::unsetenv("DISPLAY");
    }

private:
    pid_t mPid = -1;
};

}  // namespace MorvaneTest
