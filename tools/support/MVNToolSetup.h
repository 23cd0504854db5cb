#pragma once
// The start of every tool that drives the renderer, in one place.
#include <string>
#include <vector>

namespace Morvane {

class MVNToolSetup {
public:
    // Unless MORVANE_LOG_LEVEL says otherwise, warnings and errors reach the
    // user as "TOOL: level: tag: message", without the engine's start-up
    // notice that every run logs, and nothing at all with `quiet` (the
    // tool's own one-line errors still do).
    // FFmpeg's own lines are kept (MVNFFmpegLog) unless the level asks for
    // them. Standard descriptors that are closed are opened on /dev/null
    // first (keepStandardDescriptors).
    static void setUpLogging(const std::string& tool, bool quiet);
    static void keepStandardDescriptors();
    // While muted, the log sink of setUpLogging prints nothing: a check that
    // expects failures says what it found in one line of its own.
    static void muteLog(bool muted);
    // The engine leaves its configuration, logs and caches in the working
    // folder: this makes the tool's own state folder the working folder
    // ($XDG_STATE_HOME/TOOL, ~/.local/state/TOOL or a temporary one), never
    // the user's, and asks for a window of the requested size, not a full
    // screen one. False with a message on stderr when it can't.
    static bool enterStateFolder(const std::string& tool);
    // Finds and loads libMVNOgre.so; false with a message on stderr.
    static bool loadRenderModule(const std::string& tool);
    // Finds and loads libMVNMedia.so (video files, GIFs, pictures decoded
    // on the processor); false with a message on stderr.
    static bool loadMediaModule(const std::string& tool);
    static std::string join(const std::vector<std::string>& parts, char sep);
};

}  // namespace Morvane
