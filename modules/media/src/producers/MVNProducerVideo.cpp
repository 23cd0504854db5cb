#include "producers/MVNProducerVideo.h"

#include "GPUInfo.h"
#include "core/MVNAudioBlock.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "core/MVNMediaProbe.h"
#include "readers/MVNAudioSamples.h"
#include "readers/MVNVideoPictures.h"

namespace Morvane {

namespace {
const char* const kTag = "Morvane::MVNProducerVideo";
}  // namespace

MVNProducerVideo::MVNProducerVideo(const MVNProfile& profile) : MVNMediaProducer(profile, "codec.video", kTag) {}

MVNProducerVideo::~MVNProducerVideo() = default;

int MVNProducerVideo::_open(const std::string& path, int& width, int& height, int& positions) {
    MVNMediaProbe probe;
    std::string reason;
    if (MVNMediaProbe::probe(path, probe, reason) != 0) {
        log_error(kTag, "init failed, %s", reason.c_str());
        return -1;
    }
    // Where no display adapter is known there is no hardware decoder to try:
    // software at once, without a failed attempt per device kind.
    bool hardware = getBoolean("hardware", true) && !codec::GPUInfo::Instance().Vendor().empty();
    auto pictures = std::make_unique<MVNVideoPictures>(path, hardware);
    if (pictures->open() != 0) return -1;
    width = pictures->width();
    height = pictures->height();
    positions = probe.positions(mProfile);
    mPictures = std::move(pictures);
    if (probe.audio) {
        auto sound = std::make_unique<MVNAudioSamples>(path);
        if (sound->open() == 0) {
            std::lock_guard<std::mutex> guard(mSoundLock);
            mSound = std::move(sound);
        } else {
            log_warn(kTag, "%s: its sound does not decode, the clip stays silent", path.c_str());
        }
    }
    return 0;
}

void MVNProducerVideo::release() {
    MVNMediaProducer::release();
    std::lock_guard<std::mutex> guard(mSoundLock);
    mSound.reset();
}

int MVNProducerVideo::_picture(int position, uint8_t* bgra) {
    if (!mPictures) return -1;
    return mPictures->read(mPictures->pictureAt(_seconds(position)), bgra);
}

uint64_t MVNProducerVideo::_pictureKey(int position) {
    if (!mPictures || position < 0) return 0;
    return static_cast<uint64_t>(mPictures->pictureAt(_seconds(position))) + 1;
}

int MVNProducerVideo::_getAudio(int position, void* converter, MVNFrame** frame) {
    std::lock_guard<std::mutex> guard(mSoundLock);
    if (!mSound || frame == nullptr || position < 0) return -1;
    MVNFrame* block = MVNAudioBlock::pullSilence(MVNAudioBlock::samplesOf(mProfile, position));
    if (block == nullptr) return -1;
    if (mSound->read(MVNAudioBlock::firstSample(mProfile, position), block->samples(),
                     MVNAudioBlock::samples(block)) != 0) {
        MVNFrame::pushBackPool(block);
        return -1;
    }
    *frame = block;
    return 0;
}

}  // namespace Morvane
