#pragma once
#include <string>
#include <vector>

namespace Morvane {

// Joins the segments that `mvn-render --chunk K/N` wrote into one video
// without re-encoding: the packets are copied, their timestamps moved to
// where the chunk's frames sit in the whole range, so the joined file has a
// single render's frame count and timing. Each segment carries tags that
// say which chunk it is and which frames it holds; the join puts the
// segments in that order, whatever order they are given in, and refuses a
// set with a chunk missing, twice or encoded differently.
//
// Sound rendered once for the whole range (any file libavformat reads) goes
// in beside the video, cut at the video's end, so no chunk border ever falls
// inside it: copied where the container takes its codec, else encoded to
// AAC (MVNSoundSource).
class MVNSegmentJoin {
public:
    enum Result { Joined = 0, Failed = 1, BadInput = 2 };

    // The tags of a segment: "K/N" and the frames "A:B" it holds (inclusive).
    static constexpr const char* kChunkTag = "mvn_chunk";
    static constexpr const char* kFramesTag = "mvn_frames";

    // Writes `output` (under a temporary name, moved into place when done).
    // `sound` may be empty. BadInput for segments that do not make one
    // video or a sound file without sound; Failed when writing fails.
    Result join(const std::string& output, const std::vector<std::string>& segments, const std::string& sound);

    const std::string& error() const { return mError; }
    // Frames in the joined video after a successful join.
    int frames() const { return mFrames; }

private:
    std::string mError;
    int mFrames = 0;
};

}  // namespace Morvane
