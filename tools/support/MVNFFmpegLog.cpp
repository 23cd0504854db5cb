#include "MVNFFmpegLog.h"

#include <atomic>
#include <cstdarg>
#include <cstdio>
#include <mutex>

extern "C" {
#include <libavutil/log.h>
}

namespace Morvane {
namespace {

std::mutex gLock;
std::string gLastError;
std::atomic<bool> gEcho{false};

// FFmpeg calls this from any of its threads.
void onLine(void* context, int level, const char* format, va_list args) {
    if (level <= AV_LOG_ERROR) {
        va_list copy;
        va_copy(copy, args);
        char line[1024];
        std::vsnprintf(line, sizeof line, format, copy);
        va_end(copy);
        std::string text(line);
        while (!text.empty() && (text.back() == '\n' || text.back() == '\r')) text.pop_back();
        if (!text.empty()) {
            std::lock_guard<std::mutex> guard(gLock);
            gLastError = text;
        }
    }
    if (gEcho) av_log_default_callback(context, level, format, args);
}

}  // namespace

void MVNFFmpegLog::install(bool echo, int level) {
    gEcho = echo;
    av_log_set_level(level);
    av_log_set_callback(onLine);
}

std::string MVNFFmpegLog::lastError() {
    std::lock_guard<std::mutex> guard(gLock);
    return gLastError;
}

void MVNFFmpegLog::clear() {
    std::lock_guard<std::mutex> guard(gLock);
    gLastError.clear();
}

}  // namespace Morvane
