// Audio comes out whole: every sample of the file once, in the client's
// format, whatever the source's format, channel count or the buffer size.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "LogCapture.h"
#include "TestMedia.h"

extern "C" {
#include <libavutil/samplefmt.h>
}

using codec::FFmpegDecoderImplAsync;
using CodecTest::MediaPath;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {

const char* kTag = "codec::FFmpegDecoderImplAsync";

struct Decoded {
    int result = 0;  // the last NextAudio result
    long long samples = 0;
    std::vector<uint8_t> bytes;
    std::vector<double> times;
};

// One NextAudio call into `block`.
struct Block {
    int result, size, samples;
    double time;
};
Block NextBlock(FFmpegDecoderImplAsync& decoder, std::vector<uint8_t>& block) {
    Block b{0, static_cast<int>(block.size()), 0, -1};
    b.result = decoder.NextAudio(0, block.data(), &b.size, &b.samples, &b.time);
    return b;
}

Decoded DecodeAll(FFmpegDecoderImplAsync& decoder, int bufferSize) {
    Decoded out;
    std::vector<uint8_t> block(static_cast<size_t>(bufferSize));
    for (;;) {
        Block b = NextBlock(decoder, block);
        if ((out.result = b.result) != 0)
            return out;
        out.samples += b.samples;
        out.times.push_back(b.time);
        out.bytes.insert(out.bytes.end(), block.begin(), block.begin() + b.size);
    }
}

// Bytes that Debian's ffmpeg decodes from the file as stereo floats.
long long ReferenceBytes(const std::string& path) {
    std::string out;
    CodecTest::RunCommand("ffmpeg -v error -nostdin -i '" + path + "' -map 0:a -f f32le -ac 2 - | wc -c", &out);
    return std::atoll(out.c_str());
}

float SampleAt(const std::vector<uint8_t>& bytes, size_t index) {
    float v;
    std::memcpy(&v, bytes.data() + index * sizeof(float), sizeof v);
    return v;
}

}  // namespace

class AudioByteCounts : public ::testing::TestWithParam<const char*> {};

TEST_P(AudioByteCounts, MatchWhatFfmpegDecodes) {
    const std::string path = MediaPath(GetParam());
    FFmpegDecoderImplAsync decoder(path.c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    Decoded all = DecodeAll(decoder, 192000);
    EXPECT_EQ(-2, all.result);
    EXPECT_EQ(ReferenceBytes(path), static_cast<long long>(all.bytes.size()));
    EXPECT_EQ(all.samples * 8, static_cast<long long>(all.bytes.size()));
    // Times grow with the samples handed out.
    for (size_t i = 1; i < all.times.size(); ++i)
        EXPECT_GT(all.times[i], all.times[i - 1]);
}

INSTANTIATE_TEST_SUITE_P(Files, AudioByteCounts,
                         ::testing::Values("tone_mono.mp3", "tone_s16.wav", "tone_f32.wav", "tone_6ch.m4a",
                                           "tone.ogg", "cover.mp3", "gop12.mp4"),
                         [](const ::testing::TestParamInfo<const char*>& info) { return CodecTest::TestName(info.param); });

struct FormatCase {
    const char* name;
    int format;     // asked for
    int outFormat;  // handed out
    int bytesPerSample;
};

class AudioTargetFormats : public ::testing::TestWithParam<FormatCase> {};

TEST_P(AudioTargetFormats, GiveTwoSeconds) {
    // 2 s at 48 kHz of a mono tone copied to both channels.
    FFmpegDecoderImplAsync decoder(MediaPath("tone_s16.wav").c_str(), 0, 0, false, 0, -1, false);
    decoder.SetAudioSampleFormat(GetParam().format);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(GetParam().outFormat, decoder.OutputSampleFormat());
    EXPECT_EQ(2, decoder.OutputChannels());
    Decoded all = DecodeAll(decoder, 192000);
    EXPECT_EQ(96000, all.samples);
    EXPECT_EQ(96000LL * 2 * GetParam().bytesPerSample, static_cast<long long>(all.bytes.size()));
}

INSTANTIATE_TEST_SUITE_P(Targets, AudioTargetFormats,
                         ::testing::Values(FormatCase{"Short", AV_SAMPLE_FMT_S16, AV_SAMPLE_FMT_S16, 2},
                                           FormatCase{"PlanarFloat", AV_SAMPLE_FMT_FLTP, AV_SAMPLE_FMT_FLTP, 4},
                                           // Formats beyond the usual ten keep the source's.
                                           FormatCase{"Int64KeepsTheSource", AV_SAMPLE_FMT_S64, AV_SAMPLE_FMT_S16, 2}),
                         [](const ::testing::TestParamInfo<FormatCase>& info) { return std::string(info.param.name); });

TEST(AudioDecoding, MatchingFormatsAreCopiedWithEveryChannel) {
    // Stereo floats need no conversion: both channels of every sample come out.
    LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath("tone_f32.wav").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(0, log.countContaining("convert it to"));
    Decoded all = DecodeAll(decoder, 192000);
    ASSERT_EQ(88200u * 2 * 4, all.bytes.size());
    float peak = 0;
    for (size_t i = 0; i < 88200; ++i) {
        ASSERT_EQ(SampleAt(all.bytes, 2 * i), SampleAt(all.bytes, 2 * i + 1));
        peak = std::max(peak, std::fabs(SampleAt(all.bytes, 2 * i)));
    }
    // The sine source's amplitude of 1/8, spread from mono onto two channels.
    EXPECT_NEAR(0.125 * std::sqrt(0.5), peak, 0.002);
}

TEST(AudioDecoding, PlanarOutputKeepsEachBlocksPlanesWhole) {
    FFmpegDecoderImplAsync decoder(MediaPath("tone_mono.mp3").c_str(), 0, 0, false, 0, -1, false);
    decoder.SetAudioSampleFormat(AV_SAMPLE_FMT_FLTP);
    ASSERT_EQ(0, decoder.Init());
    std::vector<uint8_t> block(192000);
    for (int call = 0; call < 10; ++call) {
        Block b = NextBlock(decoder, block);
        ASSERT_EQ(0, b.result);
        ASSERT_EQ(b.samples * 2 * 4, b.size);
        // The mono source is on both planes: plane 1 repeats plane 0.
        EXPECT_EQ(0, std::memcmp(block.data(), block.data() + b.size / 2, static_cast<size_t>(b.size / 2)));
    }
}

TEST(AudioDecoding, ABufferOfExactlyOneFrameLosesNothingASmallerOneIsTold) {
    const std::string path = MediaPath("tone_6ch.m4a");
    FFmpegDecoderImplAsync big(path.c_str(), 0, 0, false, 0, -1, false);
    FFmpegDecoderImplAsync small(path.c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, big.Init());
    ASSERT_EQ(0, small.Init());
    Decoded whole = DecodeAll(big, 1 << 20);
    // One AAC frame is 1024 samples, 8192 bytes as stereo floats.
    Decoded pieces = DecodeAll(small, 8192);
    EXPECT_EQ(-2, pieces.result);
    EXPECT_EQ(whole.bytes, pieces.bytes);
    EXPECT_EQ(whole.times, pieces.times);

    LogCapture log;
    FFmpegDecoderImplAsync mp3(MediaPath("tone_mono.mp3").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, mp3.Init());
    EXPECT_EQ(-2, DecodeAll(mp3, 64).result);
    EXPECT_TRUE(log.has(MVNLogLevel::Warn, "codec::FFmpegDecoderImpl", "not enough space:9216>64, 0"));
}

TEST(AudioDecoding, SeekAudioStartsAtTheTimeAndRefusesTimesOutsideTheClip) {
    LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath("tone_s16.wav").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_EQ(-1, decoder.SeekAudio(2.5));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "SeekAudio error time:2.500 not in [0,2.000]"));
    EXPECT_EQ(-1, decoder.SeekAudioTo(-1));
    ASSERT_EQ(0, decoder.SeekAudio(1.25));
    EXPECT_EQ(1, log.countContaining("seek time:1.2500, read seek packet count:"));
    std::vector<uint8_t> block(192000);
    Block first = NextBlock(decoder, block);
    ASSERT_EQ(0, first.result);
    EXPECT_GE(first.time, 1.25 - 1e-6);
    EXPECT_LT(first.time, 1.25 + 0.05);
    // The rest of the file follows to its end.
    Decoded rest = DecodeAll(decoder, 192000);
    EXPECT_NEAR(2.0 - first.time, (first.samples + rest.samples) / 48000.0, 1e-6);
}

TEST(AudioDecoding, AudioOfAVideoFileSharesTheClipsOrigin) {
    // In the MPEG-TS copy both streams start 1.4 s into the stream's clock;
    // the clip's times start at 0 for audio as for pictures.
    FFmpegDecoderImplAsync decoder(MediaPath("gop12.ts").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    ASSERT_EQ(0, decoder.SeekAudio(3.0));
    std::vector<uint8_t> block(192000);
    Block b = NextBlock(decoder, block);
    ASSERT_EQ(0, b.result);
    EXPECT_NEAR(3.0, b.time, 0.05);
}

TEST(AudioDecoding, AFileWithoutAudioRefusesIt) {
    LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath("single_key.mp4").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    std::vector<uint8_t> block(1024);
    EXPECT_EQ(-1, NextBlock(decoder, block).result);
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "no audio stream"));
    EXPECT_EQ(-1, decoder.SeekAudio(1.0));
    EXPECT_TRUE(log.has(MVNLogLevel::Error, kTag, "audio stream not exits, not support seek audio"));
}

TEST(AudioDecoding, AudioOnlyDurationComesFromTheLastPacket) {
    LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath("tone_s16.wav").c_str(), 0, 0, false, 0, -1, false);
    ASSERT_EQ(0, decoder.Init());
    EXPECT_TRUE(log.has(MVNLogLevel::Info, kTag, "fmt_ctx duration:2.00000, eduration:2.00000"));
    EXPECT_DOUBLE_EQ(2.0, decoder.Duration());
}
