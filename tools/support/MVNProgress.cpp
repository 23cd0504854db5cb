#include "MVNProgress.h"

#include <unistd.h>

#include <cstdio>

namespace Morvane {

MVNProgress::MVNProgress(int total, bool quiet)
    : mTotal(total), mQuiet(quiet), mTerminal(::isatty(STDERR_FILENO) == 1),
      mStart(std::chrono::steady_clock::now()), mLastDraw(mStart) {}

double MVNProgress::fps(int done) const {
    double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count();
    return secs > 0 ? done / secs : 0.0;
}

void MVNProgress::update(int done) {
    if (mQuiet || !mTerminal) return;
    auto now = std::chrono::steady_clock::now();
    // Redrawing every frame would cost more than the frame at small sizes.
    if (done < mTotal && now - mLastDraw < std::chrono::milliseconds(100)) return;
    mLastDraw = now;
    const int width = 30;
    int filled = mTotal > 0 ? width * done / mTotal : width;
    double rate = fps(done);
    int left = rate > 0 ? static_cast<int>((mTotal - done) / rate + 0.5) : 0;
    std::string bar(static_cast<size_t>(filled), '#');
    bar.resize(width, '.');
    std::fprintf(stderr, "\r[%s] %d/%d  %.1f fps  %d:%02d left ", bar.c_str(), done, mTotal, rate, left / 60,
                 left % 60);
    std::fflush(stderr);
}

void MVNProgress::finish(int done, const std::string& output) {
    if (mQuiet) return;
    double secs = std::chrono::duration<double>(std::chrono::steady_clock::now() - mStart).count();
    if (mTerminal) std::fprintf(stderr, "\n");
    std::fprintf(stderr, "mvn-render: %d frames in %.1f s (%.1f fps) -> %s\n", done, secs, fps(done), output.c_str());
}

}  // namespace Morvane
