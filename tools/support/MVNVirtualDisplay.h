#pragma once
#include <string>

#include <sys/types.h>

namespace Morvane {

// A private X server (Xvfb) for machines without a display: the engine's GL
// support needs one even though its window stays hidden. Started only when
// DISPLAY is unset; stopped with the object.
class MVNVirtualDisplay {
public:
    MVNVirtualDisplay() = default;
    ~MVNVirtualDisplay();
    MVNVirtualDisplay(const MVNVirtualDisplay&) = delete;
    MVNVirtualDisplay& operator=(const MVNVirtualDisplay&) = delete;

    // Starts Xvfb with a screen of at least width x height and sets DISPLAY.
    // 0 on success, -1 with error() set.
    int start(int width, int height);
    void stop();
    const std::string& name() const { return mName; }
    const std::string& error() const { return mError; }

private:
    pid_t mPid = -1;
    std::string mName;
    std::string mError;
};

}  // namespace Morvane
