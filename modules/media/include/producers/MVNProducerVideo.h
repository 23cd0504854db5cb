#pragma once
#include <memory>
#include <mutex>

#include "producers/MVNMediaProducer.h"

namespace Morvane {

class MVNAudioSamples;
class MVNVideoPictures;

// "codec.video": a video file by position, with its sound. Position N of
// the clip shows the picture on screen at N / profile rate seconds of the
// file, whatever the file's own rate, and sounds the samples from there to
// the next position. Properties: "resource" (the file), "hardware" (boolean,
// default true: decode on a hardware decoder where one opens), "volume".
// Its length is the whole file.
class MVNProducerVideo : public MVNMediaProducer {
public:
    explicit MVNProducerVideo(const MVNProfile& profile);
    ~MVNProducerVideo() override;

    void release() override;
    int _getAudio(int position, void* converter, MVNFrame** frame) override;
    // Positions that show the same picture of the file share a key, so the
    // picture goes up to the GPU once.
    uint64_t _pictureKey(int position) override;
    MVNProducer* _alloc() override { return new MVNProducerVideo(mProfile); }

protected:
    int _open(const std::string& path, int& width, int& height, int& positions) override;
    int _picture(int position, uint8_t* bgra) override;

private:
    std::unique_ptr<MVNVideoPictures> mPictures;
    std::unique_ptr<MVNAudioSamples> mSound;  // null for a file without sound
    std::mutex mSoundLock;
};

}  // namespace Morvane
