#pragma once
#include <chrono>
#include <string>

namespace Morvane {

// Progress of a render on standard error: a bar redrawn in place when stderr
// is a terminal (frames done, fps, time left), one summary line at the end
// otherwise, nothing when quiet.
class MVNProgress {
public:
    MVNProgress(int total, bool quiet);
    void update(int done);
    void finish(int done, const std::string& output);
    double fps(int done) const;

private:
    int mTotal;
    bool mQuiet;
    bool mTerminal;
    std::chrono::steady_clock::time_point mStart;
    std::chrono::steady_clock::time_point mLastDraw;
};

}  // namespace Morvane
