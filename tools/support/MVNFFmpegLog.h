#pragma once
// FFmpeg's own log lines, kept from the terminal: a tool says what went wrong
// in one line of its own and may quote FFmpeg's last complaint in it.
#include <string>

namespace Morvane {

class MVNFFmpegLog {
public:
    // Routes FFmpeg's log through this class. With `echo`, lines up to
    // `level` (an AV_LOG_* value) still reach stderr as FFmpeg prints them;
    // without, nothing is printed. Errors are kept either way.
    static void install(bool echo, int level);
    // FFmpeg's last error line since start or clear(), without its context
    // prefix and newline; empty when there was none.
    static std::string lastError();
    static void clear();
};

}  // namespace Morvane
