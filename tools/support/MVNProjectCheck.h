#pragma once
// What a tool checks in a project before it starts the renderer, beyond what
// the loader needs to build it: the module's log-and-go-on rules would
// otherwise turn a wrong name or value into a render that looks wrong and
// exits 0.
#include <string>

#include "timeline/MVNProject.h"

namespace Morvane {

class MVNProjectLoader;

class MVNProjectCheck {
public:
    // Checks the project file at `path`, already read by MVNProjectLoader
    // into `project` (so its JSON is valid and its structure known):
    //   - a filter's "resource" is a name its service registered;
    //   - a "ufm..." property is a number, a colour property ("color",
    //     "...Color...") a colour "#rrggbbaa";
    //   - "volume" and "textSize" are numbers in their range;
    //   - pictures decode and are at most kMaxPictureSide a side (read from
    //     the header before anything is decoded);
    //   - a LUT file ("ufmMVNLutPath") parses;
    //   - a text clip's fonts ("textFontFile", "textBackupPath") open.
    // 0, or -1 with error() set to one line: "FILE: JSON.PATH: reason".
    int check(const std::string& path, const MVNProject& project);
    const std::string& error() const { return mError; }

    // The engine's largest texture side; a larger picture is refused rather
    // than decoded into gigabytes.
    static constexpr int kMaxPictureSide = 16384;

private:
    std::string mError;
};

// Reads the project file at `path` with `loader` (profile as given on the
// command line, empty for the project's own) and checks it. On failure one
// line "TOOL: reason" on standard error and -1; the loader then builds it.
int readCheckedProject(const char* tool, MVNProjectLoader& loader, const std::string& path,
                       const std::string& profile, MVNProject& project);

}  // namespace Morvane
