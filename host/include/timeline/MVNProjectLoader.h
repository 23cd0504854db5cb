#pragma once
#include <memory>
#include <string>

#include "timeline/MVNProject.h"

namespace Morvane {

// Reads a project file (JSON) and builds its timeline through the service
// registry:
//
//   { "profile": "hd_720_25p" | { "width": W, "height": H, "fps": F },
//     "tracks": [ { "clips": [ { "blank": N },
//                              { "service": S, "length": N, "in": I,
//                                "resource": R, "geometry": "[x:y wxh]",
//                                "properties": { ... },
//                                "filters": [ { "service": S, "resource": R,
//                                               "properties": { ... } } ] },
//                              { "transition": NAME | "FILE.glsl", "length": N,
//                                "properties": { ... } } ] } ] }
//
// A transition stands between two clips of a track and overlaps the last N
// frames of the clip before with the first N of the clip after, through
// the service "ogre.transition.sample"; the track gets N frames shorter.
//
// A group clip ("service": "ogre.group.sample") adds "tracks" of the same
// form as the project's: they become a timeline of their own, built before
// the group and connected to it, whose picture the group places, filters
// and stacks as one. Groups nest; the paths of errors inside them run on
// ("tracks[0].clips[2].tracks[1].clips[0].length"). A grid ("ogre.grid")
// takes "row", "column" and its cells "clip.<row>.<column>.resource" (a
// file beside the project, made absolute, or a colour "#rrggbb[aa]") as
// properties, all checked before anything is built.
//
// A video ("codec.video"), an animation ("codec.gif") or a picture decoded
// on the processor ("stb_image") names its file in "resource"; a video or an
// animation is opened while the file is read, and its "length" defaults to
// the rest of the file after "in". "properties": { "volume": V } sets the
// level of a clip's sound (1.0 as recorded).
//
// Tracks go bottom to top: each clip gets zOrder track + 1, so an upper track
// draws over a lower one. Geometry is in profile pixels with the origin at
// the top-left corner, y down; without it a clip fills the frame. Relative
// paths start at the project's folder.
//
// Every error names the file, the JSON path and the reason, on one line:
//   "show.json: tracks[1].clips[0].resource: file not found: /abs/pic.png".
// The whole file is checked before any service is built; a failure while
// building destroys what was built.
//
// Services that draw need their renderer running when they are built, and
// the renderer needs the project's profile: so a project is read first
// (checked, nothing built), then the renderer starts, then build() makes the
// services. load() does both at once for renderers that are up already.
class MVNProjectLoader {
public:
    MVNProjectLoader();
    ~MVNProjectLoader();

    // Reads and checks the file: fills the project's path, folder, profile
    // and resource locations, builds nothing. `profileOverride`, when not
    // empty, replaces the file's profile (a name of the table or
    // "WxH@FPS"). 0 on success, -1 with error() set.
    int read(const std::string& path, MVNProject& project, const std::string& profileOverride = std::string());
    // The same from text; `path` names it in messages and gives the folder.
    int readFromString(const std::string& text, const std::string& path, MVNProject& project,
                       const std::string& profileOverride = std::string());
    // Builds the services of the project last read. 0, or -1 with error()
    // set and nothing left built.
    int build(MVNProject& project);

    // read + build.
    int load(const std::string& path, MVNProject& project, const std::string& profileOverride = std::string());
    int loadFromString(const std::string& text, const std::string& path, MVNProject& project,
                       const std::string& profileOverride = std::string());
    // Destroys the project's services, newest first.
    static void unload(MVNProject& project);

    const std::string& error() const { return mError; }

private:
    struct Plan;
    std::unique_ptr<Plan> mPlan;
    std::string mPath;  // as given, for messages
    std::string mError;
};

}  // namespace Morvane
