#include "core/MVNLog.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <mutex>
#include <vector>

namespace Morvane {
namespace {

struct SinkEntry {
    int handle;
    MVNLogSink sink;
};

struct Logger {
    std::mutex lock;
    std::vector<SinkEntry> sinks;
    int nextHandle = 1;
    // Read without the lock on every call: a cheap test keeps formatting off
    // the hot path when nobody listens.
    std::atomic<int> level{-1};
    std::atomic<int> sinkCount{0};
};

Logger& logger() {
    // Never destroyed: modules and static destructors may log at exit.
    static Logger* instance = new Logger;
    return *instance;
}

MVNLogLevel levelFromEnvironment() {
    const char* env = std::getenv("MORVANE_LOG_LEVEL");
    MVNLogLevel level = MVNLogLevel::Warn;
    if (env && *env && !parseLogLevel(env, level)) {
        std::fprintf(stderr, "MORVANE_LOG_LEVEL: unknown level '%s', using warn\n", env);
    }
    return level;
}

unsigned long long threadIdForLog() { return static_cast<unsigned long long>(::syscall(SYS_gettid)); }

}  // namespace

MVNLogLevel logLevel() {
    Logger& l = logger();
    int v = l.level.load(std::memory_order_relaxed);
    if (v < 0) {
        v = static_cast<int>(levelFromEnvironment());
        l.level.store(v, std::memory_order_relaxed);
    }
    return static_cast<MVNLogLevel>(v);
}

void setLogLevel(MVNLogLevel level) { logger().level.store(static_cast<int>(level)); }

bool parseLogLevel(const std::string& name, MVNLogLevel& out) {
    static const struct {
        const char* name;
        MVNLogLevel level;
    } table[] = {{"verbose", MVNLogLevel::Verbose}, {"debug", MVNLogLevel::Debug}, {"info", MVNLogLevel::Info},
                 {"warn", MVNLogLevel::Warn},       {"error", MVNLogLevel::Error}, {"off", MVNLogLevel::Off}};
    for (const auto& row : table) {
        if (strcasecmp(name.c_str(), row.name) == 0) {
            out = row.level;
            return true;
        }
    }
    return false;
}

const char* logLevelName(MVNLogLevel level) {
    switch (level) {
        case MVNLogLevel::Verbose: return "verbose";
        case MVNLogLevel::Debug: return "debug";
        case MVNLogLevel::Info: return "info";
        case MVNLogLevel::Warn: return "warn";
        case MVNLogLevel::Error: return "error";
        case MVNLogLevel::Off: return "off";
    }
    return "?";
}

int addLogSink(MVNLogSink sink) {
    Logger& l = logger();
    std::lock_guard<std::mutex> guard(l.lock);
    int handle = l.nextHandle++;
    l.sinks.push_back({handle, std::move(sink)});
    l.sinkCount.store(static_cast<int>(l.sinks.size()));
    return handle;
}

void removeLogSink(int handle) {
    Logger& l = logger();
    std::lock_guard<std::mutex> guard(l.lock);
    for (auto it = l.sinks.begin(); it != l.sinks.end(); ++it) {
        if (it->handle == handle) {
            l.sinks.erase(it);
            break;
        }
    }
    l.sinkCount.store(static_cast<int>(l.sinks.size()));
}

void log_write(MVNLogLevel level, const char* tag, const char* format, va_list args) {
    Logger& l = logger();
    const bool toStderr = level >= logLevel();
    if (!toStderr && l.sinkCount.load(std::memory_order_relaxed) == 0) {
        return;
    }
    char small[512];
    va_list copy;
    va_copy(copy, args);
    int n = std::vsnprintf(small, sizeof small, format ? format : "", copy);
    va_end(copy);
    std::string message;
    if (n < 0) {
        message = format ? format : "";
    } else if (static_cast<size_t>(n) < sizeof small) {
        message.assign(small, static_cast<size_t>(n));
    } else {
        message.resize(static_cast<size_t>(n) + 1);
        std::vsnprintf(&message[0], message.size(), format, args);
        message.resize(static_cast<size_t>(n));
    }
    MVNLogLine line{level, tag ? tag : "", std::move(message), threadIdForLog()};

    std::lock_guard<std::mutex> guard(l.lock);
    if (toStderr) {
        using namespace std::chrono;
        auto now = system_clock::now();
        std::time_t secs = system_clock::to_time_t(now);
        int millis = static_cast<int>(duration_cast<milliseconds>(now.time_since_epoch()).count() % 1000);
        std::tm tm{};
        localtime_r(&secs, &tm);
        char stamp[32];
        std::strftime(stamp, sizeof stamp, "%H:%M:%S", &tm);
        std::fprintf(stderr, "%s.%03d %-7s [%llu] %s: %s\n", stamp, millis, logLevelName(level), line.threadId,
                     line.tag.c_str(), line.message.c_str());
    }
    for (const auto& entry : l.sinks) {
        entry.sink(line);
    }
}

}  // namespace Morvane

#define MVN_DEFINE_LOG_FUNCTION(name, level)                 \
    void name(const char* tag, const char* format, ...) {    \
        va_list args;                                        \
        va_start(args, format);                              \
        Morvane::log_write(level, tag, format, args);        \
        va_end(args);                                        \
    }

MVN_DEFINE_LOG_FUNCTION(log_verbose, Morvane::MVNLogLevel::Verbose)
MVN_DEFINE_LOG_FUNCTION(log_debug, Morvane::MVNLogLevel::Debug)
MVN_DEFINE_LOG_FUNCTION(log_info, Morvane::MVNLogLevel::Info)
MVN_DEFINE_LOG_FUNCTION(log_warn, Morvane::MVNLogLevel::Warn)
MVN_DEFINE_LOG_FUNCTION(log_error, Morvane::MVNLogLevel::Error)
