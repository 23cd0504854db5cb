#include "MVNVirtualDisplay.h"

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

namespace Morvane {

MVNVirtualDisplay::~MVNVirtualDisplay() { stop(); }

int MVNVirtualDisplay::start(int width, int height) {
    int fds[2];
    if (::pipe2(fds, O_CLOEXEC) != 0) {
        mError = std::string("pipe: ") + std::strerror(errno);
        return -1;
    }
    // Xvfb picks a free display number and writes it to the descriptor.
    std::string screen = std::to_string(std::max(width, 1920)) + "x" + std::to_string(std::max(height, 1080)) + "x24";
    pid_t pid = ::fork();
    if (pid < 0) {
        mError = std::string("fork: ") + std::strerror(errno);
        ::close(fds[0]);
        ::close(fds[1]);
        return -1;
    }
    if (pid == 0) {
        // With standard descriptors closed, the pipe itself may sit on 0 to 3:
        // move it above them first, so that neither /dev/null nor the
        // descriptor Xvfb writes to takes its place.
        int writeEnd = ::fcntl(fds[1], F_DUPFD, 10);
        int devnull = ::open("/dev/null", O_RDWR);
        if (writeEnd < 0) ::_exit(127);
        if (devnull >= 0) {
            ::dup2(devnull, 0);
            ::dup2(devnull, 1);
            ::dup2(devnull, 2);
        }
        // dup2 to another number leaves close-on-exec off.
        if (::dup2(writeEnd, 3) != 3) ::_exit(127);
        ::execlp("Xvfb", "Xvfb", "-displayfd", "3", "-screen", "0", screen.c_str(), "-nolisten", "tcp", "-noreset",
                 static_cast<char*>(nullptr));
        ::_exit(127);
    }
    ::close(fds[1]);
    mPid = pid;
    std::string number;
    pollfd p{fds[0], POLLIN, 0};
    // Xvfb needs well under a second; give a loaded machine ten.
    for (int waited = 0; waited < 10000;) {
        int rc = ::poll(&p, 1, 100);
        waited += 100;
        if (rc > 0) {
            char buf[32];
            ssize_t n = ::read(fds[0], buf, sizeof buf);
            if (n <= 0) break;
            number.append(buf, static_cast<size_t>(n));
            if (number.find('\n') != std::string::npos) break;
        }
        int status = 0;
        if (::waitpid(mPid, &status, WNOHANG) == mPid) {
            mPid = -1;
            break;
        }
    }
    ::close(fds[0]);
    while (!number.empty() && (number.back() == '\n' || number.back() == '\r')) number.pop_back();
    if (number.empty()) {
        stop();
        mError = "could not start a virtual display (is Xvfb installed?)";
        return -1;
    }
    mName = ":" + number;
    ::setenv("DISPLAY", mName.c_str(), 1);
    return 0;
}

void MVNVirtualDisplay::stop() {
    if (mPid > 0) {
        ::kill(mPid, SIGTERM);
        int status = 0;
        ::waitpid(mPid, &status, 0);
        mPid = -1;
    }
}

}  // namespace Morvane
