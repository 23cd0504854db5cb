#pragma once
#include <string>

struct AVFormatContext;
struct AVPacket;

namespace Morvane {

// The sound of a render on its own: 32-bit float WAV through libavformat,
// written under a temporary name and renamed into place by finish().
class MVNWaveFile {
public:
    explicit MVNWaveFile(const std::string& path);
    ~MVNWaveFile();

    // 0, or -1 with error() set.
    int open(int rate, int channels);
    int write(const float* samples, int count);
    int finish();
    // Removes what was written.
    void abort();

    const std::string& error() const { return mError; }

private:
    void close();

    std::string mPath;
    std::string mTempPath;
    std::string mError;
    AVFormatContext* mFormat = nullptr;
    AVPacket* mPacket = nullptr;
    int mChannels = 0;
    long long mPts = 0;
};

}  // namespace Morvane
