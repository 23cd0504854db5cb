#include "MVNSoundSource.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/audio_fifo.h>
#include <libswresample/swresample.h>
}

namespace Morvane {
namespace {

std::string avError(int code) {
    char text[AV_ERROR_MAX_STRING_SIZE] = {0};
    av_strerror(code, text, sizeof text);
    return text;
}

constexpr int64_t kAacBitRate = 192000;

}  // namespace

MVNSoundSource::~MVNSoundSource() {
    avcodec_free_context(&mDecoder);
    avcodec_free_context(&mEncoder);
    swr_free(&mSwr);
    if (mFifo) av_audio_fifo_free(mFifo);
    av_frame_free(&mFrame);
    av_packet_free(&mInPacket);
    avformat_close_input(&mInput);
}

int MVNSoundSource::open(const std::string& path, const AVOutputFormat* format) {
    mPath = path;
    auto fail = [&](const std::string& text, int rc = AVERROR(EINVAL)) {
        mError = path + ": " + text;
        return rc;
    };
    int rc = avformat_open_input(&mInput, path.c_str(), nullptr, nullptr);
    if (rc < 0) return fail(avError(rc), rc);
    if ((rc = avformat_find_stream_info(mInput, nullptr)) < 0) return fail(avError(rc), rc);
    mStream = av_find_best_stream(mInput, AVMEDIA_TYPE_AUDIO, -1, -1, nullptr, 0);
    if (mStream < 0) return fail("no sound in it");
    const AVCodecParameters* in = mInput->streams[mStream]->codecpar;
    mCopy = avformat_query_codec(format, in->codec_id, FF_COMPLIANCE_NORMAL) == 1;
    mTimeBase = mInput->streams[mStream]->time_base;
    mInPacket = av_packet_alloc();
    if (!mInPacket) return fail("out of memory", AVERROR(ENOMEM));
    if (mCopy) return 0;

    const AVCodec* decoder = avcodec_find_decoder(in->codec_id);
    const AVCodec* encoder = avcodec_find_encoder(AV_CODEC_ID_AAC);
    if (!decoder) return fail("no decoder for its sound");
    if (!encoder) return fail("no AAC encoder to put its sound in the film");
    mDecoder = avcodec_alloc_context3(decoder);
    mEncoder = avcodec_alloc_context3(encoder);
    mFrame = av_frame_alloc();
    if (!mDecoder || !mEncoder || !mFrame) return fail("out of memory", AVERROR(ENOMEM));
    avcodec_parameters_to_context(mDecoder, in);
    if ((rc = avcodec_open2(mDecoder, decoder, nullptr)) < 0) return fail(avError(rc), rc);
    if (mDecoder->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC)
        av_channel_layout_default(&mDecoder->ch_layout, mDecoder->ch_layout.nb_channels);
    mEncoder->sample_rate = mDecoder->sample_rate;
    av_channel_layout_copy(&mEncoder->ch_layout, &mDecoder->ch_layout);
    mEncoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
    mEncoder->bit_rate = kAacBitRate;
    mEncoder->time_base = AVRational{1, mDecoder->sample_rate};
    if (format->flags & AVFMT_GLOBALHEADER) mEncoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
    if ((rc = avcodec_open2(mEncoder, encoder, nullptr)) < 0) return fail("cannot encode its sound: " + avError(rc), rc);
    if ((rc = swr_alloc_set_opts2(&mSwr, &mEncoder->ch_layout, mEncoder->sample_fmt, mEncoder->sample_rate,
                                  &mDecoder->ch_layout, mDecoder->sample_fmt, mDecoder->sample_rate, 0, nullptr)) < 0 ||
        (rc = swr_init(mSwr)) < 0)
        return fail("cannot convert its sound: " + avError(rc), rc);
    mFifo = av_audio_fifo_alloc(mEncoder->sample_fmt, mEncoder->ch_layout.nb_channels, mEncoder->frame_size * 4);
    if (!mFifo) return fail("out of memory", AVERROR(ENOMEM));
    mTimeBase = mEncoder->time_base;
    return 0;
}

void MVNSoundSource::describe(AVStream* stream) const {
    if (mCopy) {
        avcodec_parameters_copy(stream->codecpar, mInput->streams[mStream]->codecpar);
    } else {
        avcodec_parameters_from_context(stream->codecpar, mEncoder);
    }
    stream->codecpar->codec_tag = 0;
    stream->time_base = mTimeBase;
}

// The next packet of the sound stream, as the file holds it.
int MVNSoundSource::read(AVPacket* pkt) {
    for (;;) {
        int rc = av_read_frame(mInput, pkt);
        if (rc < 0) {
            if (rc != AVERROR_EOF) mError = mPath + ": " + avError(rc);
            return rc;
        }
        if (pkt->stream_index == mStream) return 0;
        av_packet_unref(pkt);
    }
}

int MVNSoundSource::next(AVPacket* pkt) {
    if (mCopy) return read(pkt);
    for (;;) {
        int rc = avcodec_receive_packet(mEncoder, pkt);
        if (rc == 0 || rc == AVERROR_EOF) return rc;
        if (rc != AVERROR(EAGAIN)) {
            mError = mPath + ": encoding its sound failed: " + avError(rc);
            return rc;
        }
        const int frameSize = mEncoder->frame_size;
        if (av_audio_fifo_size(mFifo) >= frameSize) {
            if ((rc = sendFrame(frameSize)) < 0) return rc;
        } else if (!mInputDone) {
            if ((rc = fill()) < 0) return rc;
        } else if (av_audio_fifo_size(mFifo) > 0) {
            if ((rc = sendFrame(av_audio_fifo_size(mFifo))) < 0) return rc;
        } else if (!mFlushed) {
            mFlushed = true;
            avcodec_send_frame(mEncoder, nullptr);
        } else {
            return AVERROR_EOF;
        }
    }
}

// Decodes one more packet of the file into the queue of samples.
int MVNSoundSource::fill() {
    int rc = read(mInPacket);
    if (rc == AVERROR_EOF) {
        mInputDone = true;
        rc = avcodec_send_packet(mDecoder, nullptr);
    } else if (rc < 0) {
        return rc;
    } else {
        rc = avcodec_send_packet(mDecoder, mInPacket);
        av_packet_unref(mInPacket);
    }
    if (rc < 0 && rc != AVERROR_EOF) {
        mError = mPath + ": " + avError(rc);
        return rc;
    }
    for (;;) {
        rc = avcodec_receive_frame(mDecoder, mFrame);
        if (rc == AVERROR(EAGAIN) || rc == AVERROR_EOF) return 0;
        if (rc < 0) {
            mError = mPath + ": " + avError(rc);
            return rc;
        }
        const int room = swr_get_out_samples(mSwr, mFrame->nb_samples);
        if (av_audio_fifo_realloc(mFifo, av_audio_fifo_size(mFifo) + room) < 0) {
            mError = "out of memory";
            return AVERROR(ENOMEM);
        }
        // Converted straight into a frame of the encoder's format, then queued.
        AVFrame* out = av_frame_alloc();
        if (!out) return AVERROR(ENOMEM);
        out->format = mEncoder->sample_fmt;
        av_channel_layout_copy(&out->ch_layout, &mEncoder->ch_layout);
        out->sample_rate = mEncoder->sample_rate;
        out->nb_samples = room;
        if ((rc = av_frame_get_buffer(out, 0)) < 0) {
            av_frame_free(&out);
            return rc;
        }
        int got = swr_convert(mSwr, out->data, room, const_cast<const uint8_t**>(mFrame->extended_data),
                              mFrame->nb_samples);
        av_frame_unref(mFrame);
        if (got > 0) av_audio_fifo_write(mFifo, reinterpret_cast<void**>(out->data), got);
        av_frame_free(&out);
        if (got < 0) {
            mError = mPath + ": " + avError(got);
            return got;
        }
    }
}

// Hands the encoder `samples` queued samples (a full frame, or the last).
int MVNSoundSource::sendFrame(int samples) {
    AVFrame* frame = av_frame_alloc();
    if (!frame) return AVERROR(ENOMEM);
    frame->format = mEncoder->sample_fmt;
    av_channel_layout_copy(&frame->ch_layout, &mEncoder->ch_layout);
    frame->sample_rate = mEncoder->sample_rate;
    frame->nb_samples = samples;
    int rc = av_frame_get_buffer(frame, 0);
    if (rc >= 0) {
        av_audio_fifo_read(mFifo, reinterpret_cast<void**>(frame->data), samples);
        frame->pts = mSamples;
        mSamples += samples;
        rc = avcodec_send_frame(mEncoder, frame);
    }
    av_frame_free(&frame);
    if (rc < 0) mError = mPath + ": encoding its sound failed: " + avError(rc);
    return rc;
}

}  // namespace Morvane
