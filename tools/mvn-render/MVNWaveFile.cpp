#include "MVNWaveFile.h"

#include <cstdio>
#include <cstring>

extern "C" {
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
}

namespace Morvane {

namespace {
std::string avError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {0};
    av_strerror(code, text, sizeof text);
    return text;
}
}  // namespace

MVNWaveFile::MVNWaveFile(const std::string& path) : mPath(path), mTempPath(path + ".part") {}

MVNWaveFile::~MVNWaveFile() {
    if (mFormat) abort();
}

int MVNWaveFile::open(int rate, int channels) {
    mChannels = channels;
    int rc = avformat_alloc_output_context2(&mFormat, nullptr, "wav", mTempPath.c_str());
    AVStream* stream = rc >= 0 && mFormat ? avformat_new_stream(mFormat, nullptr) : nullptr;
    mPacket = av_packet_alloc();
    if (!stream || !mPacket) {
        mError = "cannot create " + mPath + ": " + avError(rc);
        return -1;
    }
    // Raw samples need no encoder: each block goes out as it is.
    AVCodecParameters* par = stream->codecpar;
    par->codec_type = AVMEDIA_TYPE_AUDIO;
    par->codec_id = AV_CODEC_ID_PCM_F32LE;
    par->sample_rate = rate;
    av_channel_layout_default(&par->ch_layout, channels);
    par->bits_per_coded_sample = 32;
    par->block_align = 4 * channels;
    par->bit_rate = static_cast<int64_t>(rate) * channels * 32;
    stream->time_base = AVRational{1, rate};
    if ((rc = avio_open(&mFormat->pb, mTempPath.c_str(), AVIO_FLAG_WRITE)) < 0 ||
        (rc = avformat_write_header(mFormat, nullptr)) < 0) {
        mError = "cannot write " + mPath + ": " + avError(rc);
        return -1;
    }
    return 0;
}

int MVNWaveFile::write(const float* samples, int count) {
    if (!mFormat || count <= 0) return mFormat ? 0 : -1;
    int bytes = count * mChannels * static_cast<int>(sizeof(float));
    if (av_new_packet(mPacket, bytes) < 0) {
        mError = "out of memory";
        return -1;
    }
    std::memcpy(mPacket->data, samples, static_cast<size_t>(bytes));
    mPacket->pts = mPacket->dts = mPts;
    mPacket->duration = count;
    mPacket->stream_index = 0;
    mPts += count;
    int rc = av_write_frame(mFormat, mPacket);
    av_packet_unref(mPacket);
    if (rc < 0) {
        mError = "cannot write " + mPath + ": " + avError(rc);
        return -1;
    }
    return 0;
}

int MVNWaveFile::finish() {
    if (!mFormat) return -1;
    int rc = av_write_trailer(mFormat);
    close();
    if (rc < 0 || std::rename(mTempPath.c_str(), mPath.c_str()) != 0) {
        mError = "cannot finish " + mPath;
        std::remove(mTempPath.c_str());
        return -1;
    }
    return 0;
}

void MVNWaveFile::abort() {
    close();
    std::remove(mTempPath.c_str());
}

void MVNWaveFile::close() {
    if (mFormat) {
        if (mFormat->pb) avio_closep(&mFormat->pb);
        avformat_free_context(mFormat);
        mFormat = nullptr;
    }
    av_packet_free(&mPacket);
}

}  // namespace Morvane
