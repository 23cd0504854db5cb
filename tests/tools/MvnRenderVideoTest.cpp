// mvn-render with video clips: a clip's sine, placed after a blank, comes
// out of the rendered MP4 (decoded here with libavformat) at its time,
// pitch and volume, beside a picture stream of the same length; --no-audio
// leaves it out and --audio-out writes it to a WAV file as well, which
// --audio-only writes alone, to the byte; the clip's
// picture reaches the output as the ffmpeg command shows it.
#include <gtest/gtest.h>

#include <sys/wait.h>

#include <cmath>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "core/MVNByteBuffer.h"
#include "core/MVNFrame.h"
#include "core/MVNImage.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include "MVNTestPaths.h"
}

namespace fs = std::filesystem;

namespace {

std::string readFile(const fs::path& path) {
    std::ifstream in(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
}

int run(const std::string& command) {
    int rc = std::system((command + " >tool.log 2>&1").c_str());
    return WIFEXITED(rc) ? WEXITSTATUS(rc) : -1;
}

struct Decoded {
    int streams = 0;
    bool h264 = false;
    double videoSeconds = 0;
    double soundSeconds = 0;
    int rate = 0;
    std::vector<float> left;  // the first channel, as floats
};

// Every stream's kind and length, and the sound decoded.
Decoded decode(const std::string& path) {
    Decoded d;
    AVFormatContext* fmt = nullptr;
    if (avformat_open_input(&fmt, path.c_str(), nullptr, nullptr) != 0) return d;
    avformat_find_stream_info(fmt, nullptr);
    d.streams = static_cast<int>(fmt->nb_streams);
    int audio = -1;
    for (unsigned i = 0; i < fmt->nb_streams; ++i) {
        AVStream* st = fmt->streams[i];
        double seconds = st->duration > 0 ? st->duration * av_q2d(st->time_base) : 0;
        if (st->codecpar->codec_type == AVMEDIA_TYPE_VIDEO) {
            d.h264 = st->codecpar->codec_id == AV_CODEC_ID_H264;
            d.videoSeconds = seconds;
        } else if (st->codecpar->codec_type == AVMEDIA_TYPE_AUDIO) {
            audio = static_cast<int>(i);
            d.soundSeconds = seconds;
        }
    }
    if (audio >= 0) {
        AVStream* st = fmt->streams[audio];
        const AVCodec* codec = avcodec_find_decoder(st->codecpar->codec_id);
        AVCodecContext* ctx = avcodec_alloc_context3(codec);
        avcodec_parameters_to_context(ctx, st->codecpar);
        avcodec_open2(ctx, codec, nullptr);
        d.rate = ctx->sample_rate;
        AVPacket* pkt = av_packet_alloc();
        AVFrame* frame = av_frame_alloc();
        auto drain = [&]() {
            while (avcodec_receive_frame(ctx, frame) == 0) {
                bool planar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame->format));
                const float* s = reinterpret_cast<const float*>(frame->data[0]);
                int step = planar ? 1 : frame->ch_layout.nb_channels;
                for (int i = 0; i < frame->nb_samples; ++i) d.left.push_back(s[i * step]);
            }
        };
        while (av_read_frame(fmt, pkt) >= 0) {
            if (pkt->stream_index == audio && avcodec_send_packet(ctx, pkt) >= 0) drain();
            av_packet_unref(pkt);
        }
        avcodec_send_packet(ctx, nullptr);
        drain();
        av_frame_free(&frame);
        av_packet_free(&pkt);
        avcodec_free_context(&ctx);
    }
    avformat_close_input(&fmt);
    return d;
}

double rms(const std::vector<float>& s, size_t from, size_t to) {
    double sum = 0;
    for (size_t i = from; i < to && i < s.size(); ++i) sum += double(s[i]) * s[i];
    return to > from ? std::sqrt(sum / (to - from)) : 0;
}

double pitch(const std::vector<float>& s, size_t from, size_t to, int rate) {
    long first = -1, last = -1, crossings = 0;
    for (size_t i = from + 1; i < to && i < s.size(); ++i) {
        if (s[i - 1] < 0 && s[i] >= 0) {
            if (first < 0) first = long(i);
            last = long(i);
            ++crossings;
        }
    }
    return crossings > 1 ? (crossings - 1) * double(rate) / (last - first) : 0;
}

long onset(const std::vector<float>& s, float threshold) {
    for (size_t i = 0; i < s.size(); ++i) {
        if (std::fabs(s[i]) > threshold) return long(i);
    }
    return -1;
}

class MvnRenderVideo : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::current_path() / "sound";
        fs::create_directories(dir);
        // Two seconds of pictures with a 1 kHz sine at 1/8 of full scale,
        // recorded at 44.1 kHz.
        ASSERT_EQ(run("ffmpeg -hide_banner -loglevel error -nostdin -y -f lavfi -i testsrc2=s=64x36:r=25:d=2 "
                      "-f lavfi -i sine=frequency=1000:sample_rate=44100:duration=2 "
                      "-af 'pan=stereo|c0=c0|c1=c0' -c:v libx264 -preset ultrafast -g 12 -bf 2 -pix_fmt yuv420p "
                      "-c:a aac -shortest " + (dir / "tone.mp4").string()),
                  0);
        // A second of silence, then the clip at half its level.
        project = (dir / "show.json").string();
        std::ofstream(project) << R"({ "profile": { "width": 64, "height": 36, "fps": 25 },
            "tracks": [ { "clips": [ { "blank": 25 },
              { "service": "codec.video", "resource": "tone.mp4", "properties": { "volume": 0.5 } } ] } ] })";
    }
    std::string tool() const { return std::string(MVN_BINARY_DIR) + "/bin/mvn-render -q " + project; }
    fs::path dir;
    std::string project;
};

}  // namespace

TEST_F(MvnRenderVideo, TheClipsSoundComesAtItsTimeAndLevelBesideThePictures) {
    const std::string out = (dir / "show.mp4").string();
    const std::string wav = (dir / "show.wav").string();
    ASSERT_EQ(run(tool() + " -o " + out + " --audio-out " + wav), 0);
    Decoded d = decode(out);
    ASSERT_EQ(d.streams, 2);
    EXPECT_TRUE(d.h264);
    ASSERT_EQ(d.rate, 48000);
    // 75 positions: three seconds of each.
    EXPECT_NEAR(d.videoSeconds, 3.0, 0.001);
    EXPECT_NEAR(d.soundSeconds, 3.0, 1024.0 / 48000);
    // Silent over the blank, then the sine from 1 s, within one AAC frame.
    EXPECT_LT(rms(d.left, 0, 45000), 1e-3);
    EXPECT_NEAR(onset(d.left, 0.02f), 48000, 1024);
    // Half of an RMS of 0.125 / sqrt(2), at its own pitch.
    EXPECT_NEAR(rms(d.left, 60000, 130000), 0.0442, 0.003);
    EXPECT_NEAR(pitch(d.left, 60000, 130000, 48000), 1000.0, 2.0);

    // The WAV file holds the same sound unencoded, to the sample.
    Decoded w = decode(wav);
    ASSERT_EQ(w.rate, 48000);
    EXPECT_EQ(w.left.size(), 3u * 48000);
    EXPECT_NEAR(onset(w.left, 0.02f), 48000, 8);
    EXPECT_NEAR(rms(w.left, 60000, 130000), 0.0442, 0.002);

    // The sound alone is the full render's, sample for sample.
    const std::string alone = (dir / "alone.wav").string();
    ASSERT_EQ(run(tool() + " --audio-only -o " + alone), 0);
    const std::string full = readFile(wav);
    ASSERT_GT(full.size(), 3u * 48000 * 2 * 4);
    EXPECT_TRUE(readFile(alone) == full) << "the sound alone differs from the full render's";
}

TEST_F(MvnRenderVideo, NoAudioLeavesTheSoundOutAndPicturesNeverHoldIt) {
    const std::string out = (dir / "quiet.mkv").string();
    ASSERT_EQ(run(tool() + " -o " + out + " --no-audio"), 0);
    Decoded d = decode(out);
    EXPECT_EQ(d.streams, 1);
    EXPECT_TRUE(d.h264);
    // A picture sequence with the sound written apart.
    const std::string wav = (dir / "apart.wav").string();
    ASSERT_EQ(run(tool() + " -o " + (dir / "f%03d.png").string() + " --frames 20:29 --audio-out " + wav), 0);
    EXPECT_TRUE(fs::exists(dir / "f029.png"));
    Decoded w = decode(wav);
    // Ten positions, the sine from the sixth.
    EXPECT_EQ(w.left.size(), 10u * 1920);
    EXPECT_NEAR(onset(w.left, 0.02f), 5 * 1920, 8);
    const std::string alone = (dir / "apart-alone.wav").string();
    ASSERT_EQ(run(tool() + " --audio-only --frames 20:29 -o " + alone), 0);
    EXPECT_TRUE(readFile(alone) == readFile(wav)) << "the sound of frames 20:29 alone differs";
    // Only a WAV file holds the sound alone.
    EXPECT_EQ(run(tool() + " --audio-only -o " + (dir / "alone.mp4").string()), 2);
    EXPECT_FALSE(fs::exists(dir / "alone.mp4"));
}

TEST_F(MvnRenderVideo, TheClipsPictureReachesTheOutputAsFfmpegShowsIt) {
    // Position 37 is the clip's 12th: 0.48 s into the file, a key frame's
    // neighbour behind two B-frames.
    ASSERT_EQ(run(tool() + " -o " + (dir / "v%03d.png").string() + " --frames 37:37"), 0);
    const std::string reference = (dir / "reference.png").string();
    ASSERT_EQ(run("ffmpeg -v error -nostdin -y -i " + (dir / "tone.mp4").string() +
                  " -vf 'fps=25:round=up,select=eq(n\\,12)' -frames:v 1 " + reference),
              0);
    Morvane::MVNFrame* got = Morvane::MVNImage::loadFromFile((dir / "v037.png").string(), 0, 0);
    Morvane::MVNFrame* want = Morvane::MVNImage::loadFromFile(reference, 0, 0);
    ASSERT_NE(got, nullptr);
    ASSERT_NE(want, nullptr);
    ASSERT_EQ(got->width(), 64);
    ASSERT_EQ(want->width(), 64);
    const uint8_t* a = got->buffer()->ptr();
    const uint8_t* b = want->buffer()->ptr();
    int worst = 0;
    long sum = 0;
    for (int i = 0; i < 64 * 36 * 4; ++i) {
        int d = std::abs(int(a[i]) - int(b[i]));
        worst = std::max(worst, d);
        sum += d;
    }
    // Uploaded and drawn one to one: only the two conversions' rounding.
    EXPECT_LE(worst, 3);
    EXPECT_LE(double(sum) / (64 * 36 * 4), 0.5);
    Morvane::MVNFrame::pushBackPool(got);
    Morvane::MVNFrame::pushBackPool(want);
}
