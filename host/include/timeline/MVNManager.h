#pragma once
#include <atomic>
#include <string>

#include "core/MVNTypes.h"
#include "core/Mutex.h"

namespace Morvane {

// Host-wide settings read by services while they run. Thread-safe.
class MVNManager {
public:
    static MVNManager* getSingleton();

    MVNMode getMode() const { return mMode.load(); }
    void setMode(MVNMode mode) { mMode.store(mode); }
    // Frames that a rendering consumer is skipping; -1 when none are.
    int getIgnoreFrames() const { return mIgnoreFrames.load(); }
    void setIgnoreFrames(int frames) { mIgnoreFrames.store(frames); }
    // Seconds of the timeline played so far, as the consumer counts them.
    double getElapsedTimestamp() const { return mElapsed.load(); }
    void setElapsedTimestamp(double seconds) { mElapsed.store(seconds); }
    // Path of the picture shown in place of a media file that can't be read;
    // empty when none is configured.
    std::string getInvalidResource() const;
    void setInvalidResource(const std::string& path);
    // The user's home folder: $HOME unless set.
    std::string getUserHome() const;
    void setUserHome(const std::string& path);

private:
    MVNManager();

    std::atomic<MVNMode> mMode{MVN_MODE_EDIT};
    std::atomic<int> mIgnoreFrames{-1};
    std::atomic<double> mElapsed{0.0};
    mutable Mutex mLock;
    std::string mInvalidResource;
    std::string mUserHome;
};

}  // namespace Morvane
