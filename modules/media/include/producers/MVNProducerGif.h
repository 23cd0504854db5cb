#pragma once
#include <cstdint>
#include <vector>

#include "producers/MVNMediaProducer.h"

namespace Morvane {

// "codec.gif": an animated picture that loops. Every picture of the file is
// decoded once, at init, through libavformat and libavcodec, with the time
// it starts; a position shows the picture on screen at its time, taken
// modulo the animation's length. The clip's length is one pass.
class MVNProducerGif : public MVNMediaProducer {
public:
    explicit MVNProducerGif(const MVNProfile& profile);
    ~MVNProducerGif() override;

    void release() override;
    uint64_t _pictureKey(int position) override;
    MVNProducer* _alloc() override { return new MVNProducerGif(mProfile); }

protected:
    int _open(const std::string& path, int& width, int& height, int& positions) override;
    int _picture(int position, uint8_t* bgra) override;

private:
    // The picture on screen at `position`.
    size_t _index(int position) const;

    struct Picture {
        double start;                // seconds into one pass
        std::vector<uint8_t> bgra;  // width x height, rows packed
    };
    std::vector<Picture> mPictures;
    double mLoop = 0;  // seconds of one pass
};

}  // namespace Morvane
