#pragma once
#include <string>

namespace Morvane {

// mvn-render --audio-only: the sound of a project on its own, to a WAV file.
// The timeline is built and asked for its sound position by position, as a
// full render asks it, so the samples are the ones a full render puts in its
// film. The renderer starts (filters, transitions and text are built on it)
// in a tiny window, but no picture is drawn or read back. A farm
// renders the sound this way once for the whole range while the pictures
// render in pieces, and the join puts it beside them.
struct MVNSoundPassRequest {
    std::string project;
    std::string output;   // a .wav file
    std::string profile;  // as --profile gives it; empty: the project's
    int first = -1;       // -1: from the start
    int last = -1;        // -1: to the end
    bool quiet = false;
};

class MVNSoundPass {
public:
    // The tool's exit status: 0 written (or nothing sounds: then no file and
    // a note), 2 bad arguments or a bad project, 1 the sound or its file
    // failed, 130 interrupted.
    static int run(const MVNSoundPassRequest& request);
};

}  // namespace Morvane
