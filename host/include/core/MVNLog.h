#pragma once
// Logging of the framework and its modules. Every line carries a tag (the
// class, "Morvane::MVNOgreManager", or a short form) and a printf-style text;
// the texts are part of the interface, so tests read them through a sink.
#include <cstdarg>
#include <functional>
#include <string>

namespace Morvane {

enum class MVNLogLevel { Verbose = 0, Debug = 1, Info = 2, Warn = 3, Error = 4, Off = 5 };

// One formatted line as a sink receives it.
struct MVNLogLine {
    MVNLogLevel level;
    std::string tag;
    std::string message;
    unsigned long long threadId;
};

using MVNLogSink = std::function<void(const MVNLogLine&)>;

// Lines at or above this level go to stderr. The first call reads
// MORVANE_LOG_LEVEL (error, warn, info, debug, verbose, off); "warn" otherwise.
MVNLogLevel logLevel();
void setLogLevel(MVNLogLevel level);
// Parses a level name; returns false and leaves `out` for an unknown name.
bool parseLogLevel(const std::string& name, MVNLogLevel& out);
const char* logLevelName(MVNLogLevel level);

// Sinks see every line whatever the stderr level, so that tests can assert
// debug texts. Returns a handle for removeLogSink. Sinks run on the logging
// thread, under the logger's lock: they must not log themselves.
int addLogSink(MVNLogSink sink);
void removeLogSink(int handle);

void log_write(MVNLogLevel level, const char* tag, const char* format, va_list args);

}  // namespace Morvane

// The five logging functions, at global scope so that every namespace of the
// project (Morvane, codec) calls them alike.
void log_verbose(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_debug(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_info(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_warn(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
void log_error(const char* tag, const char* format, ...) __attribute__((format(printf, 2, 3)));
