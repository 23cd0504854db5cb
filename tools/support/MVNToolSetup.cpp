#include "MVNToolSetup.h"

#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <filesystem>

extern "C" {
#include <libavutil/log.h>
}

#include "MVNFFmpegLog.h"
#include "core/MVNLog.h"
#include "timeline/MVNModule.h"

namespace fs = std::filesystem;

namespace Morvane {
namespace {
std::atomic<bool> gMuted{false};
}

void MVNToolSetup::muteLog(bool muted) { gMuted = muted; }

void MVNToolSetup::keepStandardDescriptors() {
    // A closed 0, 1 or 2 would be handed to the next file opened, and a
    // stray print would land in the output video.
    for (int fd = 0; fd <= 2; ++fd) {
        if (::fcntl(fd, F_GETFD) != -1) continue;
        int devnull = ::open("/dev/null", O_RDWR);
        if (devnull >= 0 && devnull != fd) {
            ::dup2(devnull, fd);
            ::close(devnull);
        }
    }
}

void MVNToolSetup::setUpLogging(const std::string& tool, bool quiet) {
    keepStandardDescriptors();
    const char* env = std::getenv("MORVANE_LOG_LEVEL");
    // The encoders' statistics are noise to a user; their errors are not.
    MVNLogLevel wanted = MVNLogLevel::Warn;
    bool chatty = env && *env && parseLogLevel(env, wanted) && wanted <= MVNLogLevel::Debug;
    // FFmpeg's lines would come before the tool's own one-line message; the
    // sinks and the project check say what failed, quoting FFmpeg's reason.
    MVNFFmpegLog::install(chatty, chatty ? AV_LOG_INFO : AV_LOG_QUIET);
    if (env && *env) return;
    setLogLevel(MVNLogLevel::Off);
    if (quiet) return;
    addLogSink([tool](const MVNLogLine& line) {
        if (line.level < MVNLogLevel::Warn || gMuted) return;
        if (line.message.find("must contain at least one entry") != std::string::npos) return;
        // A video without sound is no error to the user, and the
        // encoder's priming block of a file's sound decodes to nothing.
        if (line.message.find("Could not find audio stream") != std::string::npos) return;
        if (line.message.find("decode audio nb_samples:0") != std::string::npos) return;
        std::fprintf(stderr, "%s: %s: %s: %s\n", tool.c_str(), logLevelName(line.level), line.tag.c_str(),
                     line.message.c_str());
    });
}

bool MVNToolSetup::enterStateFolder(const std::string& tool) {
    const char* xdg = std::getenv("XDG_STATE_HOME");
    const char* home = std::getenv("HOME");
    fs::path base = xdg && *xdg ? fs::path(xdg) : home && *home ? fs::path(home) / ".local/state" : fs::temp_directory_path();
    fs::path dir = base / tool;
    std::error_code ec;
    fs::create_directories(dir, ec);
    if (ec) dir = fs::temp_directory_path() / (tool + "-" + std::to_string(::getuid()));
    fs::create_directories(dir, ec);
    if (::chdir(dir.c_str()) != 0) {
        std::fprintf(stderr, "%s: cannot use the state folder %s\n", tool.c_str(), dir.c_str());
        return false;
    }
    if (FILE* marker = std::fopen("not_full_screen", "a")) std::fclose(marker);
    return true;
}

bool MVNToolSetup::loadRenderModule(const std::string& tool) {
    std::string module = findModule("libMVNOgre.so");
    if (module.empty() || loadModule(module) != 0) {
        std::fprintf(stderr, "%s: the render module libMVNOgre.so could not be loaded%s\n", tool.c_str(),
                     module.empty() ? " (not found)" : "");
        return false;
    }
    return true;
}

bool MVNToolSetup::loadMediaModule(const std::string& tool) {
    std::string module = findModule("libMVNMedia.so");
    if (module.empty() || loadModule(module) != 0) {
        std::fprintf(stderr, "%s: the media module libMVNMedia.so could not be loaded%s\n", tool.c_str(),
                     module.empty() ? " (not found)" : "");
        return false;
    }
    return true;
}

std::string MVNToolSetup::join(const std::vector<std::string>& parts, char sep) {
    std::string out;
    for (const auto& p : parts) {
        if (!out.empty()) out += sep;
        out += p;
    }
    return out;
}

}  // namespace Morvane
