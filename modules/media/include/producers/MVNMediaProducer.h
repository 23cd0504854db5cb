#pragma once
#include <cstdint>
#include <mutex>
#include <string>

#include "services/MVNProducer.h"

namespace Morvane {

// A clip whose pictures the host decodes on the processor: each position
// gives a pooled B,G,R,A frame (colour type 28) of the media's own size,
// which the host uploads to the clip's render texture when a renderer is
// registered ("ogreRenderTexture"); without one the frames are all there is.
//
// init opens "resource" and sets "width", "height", "render.width" and
// "render.height" to the picture's size; a subclass may give the clip its
// length too.
class MVNMediaProducer : public MVNProducer {
public:
    ~MVNMediaProducer() override;

    int init() override;
    void release() override;
    int getRenderType(int position) override { return 1; }
    int _getImage(int position, MVNFrame** frame) override;

protected:
    // `service` is the registered name, `tag` heads the log lines.
    MVNMediaProducer(const MVNProfile& profile, const char* service, const char* tag);

    // Opens `path`: the picture size, and the clip's length in positions
    // (0 keeps the length the clip has). 0, or -1 with the reason logged.
    virtual int _open(const std::string& path, int& width, int& height, int& positions) = 0;
    // Writes the picture of `position` (width x height, rows packed). 0 or -1.
    virtual int _picture(int position, uint8_t* bgra) = 0;

    // Seconds of the clip at `position`.
    double _seconds(int position) const;

    const char* const mTag;

private:
    std::mutex mPictureLock;  // one picture at a time from one reader
};

}  // namespace Morvane
