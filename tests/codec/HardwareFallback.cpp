// Hardware decoding: the vendor's decoder family first, then FFmpeg's own
// hardware configurations, then software, each step told in the log. This
// machine has no GPU, so every injected vendor ends in software.
#include <gtest/gtest.h>

#include <cstdio>
#include <string>
#include <vector>

#include "FFmpegDecoderImplAsync.h"
#include "GPUInfo.h"
#include "LogCapture.h"
#include "TestMedia.h"

#include "HardwareDecoderOpener.h"

extern "C" {
#include <libavcodec/codec_id.h>
#include <libavutil/hwcontext.h>
}

using codec::FFmpegDecoderImplAsync;
using codec::GPUInfo;
using CodecTest::MediaPath;
using Morvane::MVNLogLevel;
using MorvaneTest::LogCapture;

namespace {

const char* kTag = "codec::FFmpegDecoderImpl";

// True when one of the devices the tests would fail on opens here after all.
bool MachineHasHardwareDecoding() {
    for (AVHWDeviceType type : {AV_HWDEVICE_TYPE_CUDA, AV_HWDEVICE_TYPE_VAAPI, AV_HWDEVICE_TYPE_VDPAU}) {
        AVBufferRef* device = nullptr;
        if (av_hwdevice_ctx_create(&device, type, nullptr, nullptr, 0) >= 0) {
            av_buffer_unref(&device);
            return true;
        }
    }
    return false;
}

struct Line {
    MVNLogLevel level;
    std::string text;
};

Line D(const std::string& text) { return {MVNLogLevel::Debug, text}; }
Line E(const std::string& text) { return {MVNLogLevel::Error, text}; }

// Checks that `expected` appear in this order among the decoder's lines.
void ExpectInOrder(const LogCapture& log, const std::vector<Line>& expected) {
    auto lines = log.lines();
    size_t at = 0;
    for (const Line& want : expected) {
        bool found = false;
        for (; at < lines.size(); ++at) {
            if (lines[at].tag == kTag && lines[at].level == want.level && lines[at].message == want.text) {
                found = true;
                ++at;
                break;
            }
        }
        EXPECT_TRUE(found) << "missing, or out of order: \"" << want.text << "\"";
        if (!found)
            return;
    }
}

class VendorOverride {
public:
    explicit VendorOverride(const std::string& vendor) { GPUInfo::Instance().SetVendor(vendor); }
    ~VendorOverride() { GPUInfo::Instance().ResetVendor(); }
};

// Opens with hardware asked for, checks the log and the software picture.
void OpenAndPlay(const char* file, int frame, const std::vector<Line>& expected, const std::vector<std::string>& absent) {
    LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath(file).c_str(), 0, 0, false, 0, -1, true);
    ASSERT_EQ(0, decoder.Init());
    ExpectInOrder(log, expected);
    for (const std::string& text : absent)
        EXPECT_EQ(0, log.countContaining(text)) << "unexpected: " << text;
    EXPECT_TRUE(decoder.UseHardware());
    EXPECT_FALSE(decoder.IsHardwareOpen());
    EXPECT_EQ(frame, CodecTest::NextPicture(decoder, frame / 25.0).frame);
}

}  // namespace

struct VendorCase {
    const char* name;
    const char* vendor;
    const char* file;
    std::vector<Line> lines;
    std::vector<std::string> absent;
};

class HardwareFallback : public ::testing::TestWithParam<VendorCase> {
protected:
    void SetUp() override {
        if (MachineHasHardwareDecoding())
            GTEST_SKIP() << "this machine decodes in hardware";
    }
};

TEST_P(HardwareFallback, EndsInSoftwareWithEveryStepLogged) {
    const VendorCase& c = GetParam();
    VendorOverride vendor(c.vendor);
    OpenAndPlay(c.file, 17, c.lines, c.absent);
}

const Line kAutoH264[] = {D("open codec by vendor failed, use auto mode"),
                          D("hwaccel: available hw device type:cuda"),
                          D("hwaccel: available hw device type:vaapi"),
                          D("hwaccel: available hw device type:vdpau"),
                          E("hwaccel: Failed to create specified HW device cuda"),
                          E("hwaccel: Failed to create specified HW device vaapi"),
                          E("hwaccel: Failed to create specified HW device vdpau"),
                          D("open codec by auto failed, use software decoder")};

std::vector<Line> Then(std::vector<Line> first, const Line* rest, size_t n) {
    first.insert(first.end(), rest, rest + n);
    return first;
}

INSTANTIATE_TEST_SUITE_P(
    Vendors, HardwareFallback,
    ::testing::Values(
        VendorCase{"NvidiaH264",
                   "NVIDIA",
                   "gop12.mp4",
                   Then({D("hwaccel: find decoder h264_cuvid ok"), E("hwaccel: Failed to create specified HW device cuda")},
                        kAutoH264, 8),
                   {}},
        VendorCase{"IntelH264",
                   "Intel",
                   "gop12.mp4",
                   Then({D("hwaccel: find decoder h264 ok"), E("hwaccel: Failed to create specified HW device vaapi")},
                        kAutoH264, 8),
                   {"qsv"}},
        VendorCase{"IntelVp8",
                   "Intel",
                   "vp8.webm",
                   {D("hwccel: qsv not support codec vp8"), D("hwaccel: not find codec"),
                    D("open codec by vendor failed, use auto mode"), D("open codec by auto failed, use software decoder")},
                   {"hwaccel: find decoder"}},
        VendorCase{"AmdVp8",
                   "AMD",
                   "vp8.webm",
                   {D("hwaccel: not find codec"), D("open codec by vendor failed, use auto mode"),
                    D("open codec by auto failed, use software decoder")},
                   {"hwccel:"}},
        VendorCase{"NoVendor",
                   "",
                   "gop12.mp4",
                   Then({D("not find vendor"), D("hwaccel: not find codec")}, kAutoH264, 8),
                   {}},
        VendorCase{"UnknownVendor",
                   "Matrox",
                   "gop12.mp4",
                   Then({D("hwccel: not support vendor:Matrox"), D("hwaccel: not find codec")}, kAutoH264, 8),
                   {}}),
    [](const ::testing::TestParamInfo<VendorCase>& info) { return std::string(info.param.name); });

TEST_F(HardwareFallback, TheD3dMarkerSkipsTheVendorDecoders) {
    VendorOverride vendor("NVIDIA");
    CodecTest::WriteText("use_d3d_decoder", "");
    OpenAndPlay("gop12.mp4", 40,
                {D("hwaccel: available hw device type:cuda"),
                 D("open codec by auto failed, use software decoder")},
                {"cuvid", "hwaccel: find decoder", "open codec by vendor failed"});
    std::remove("use_d3d_decoder");
}

TEST_F(HardwareFallback, ThreadSettingsAreToldByEachPath) {
    VendorOverride vendor("NVIDIA");
    LogCapture log;
    FFmpegDecoderImplAsync decoder(MediaPath("gop12.mp4").c_str(), 0, 0, false, 0, -1, true);
    decoder.SetThreadCount(2);
    decoder.SetThreadType("frame");
    ASSERT_EQ(0, decoder.Init());
    ExpectInOrder(log, {D("hwaccel: find decoder h264_cuvid ok"), D("hwaccel: thread_count:2"),
                        D("hwaccel: thread_type:frame"), D("open codec by vendor failed, use auto mode"),
                        D("hwaccel: thread_count:2"), D("hwaccel: thread_type: frame"),
                        D("open codec by auto failed, use software decoder"), D("thread_count:2"),
                        D("thread_type:frame")});
}

struct TableCase {
    const char* vendor;
    AVCodecID codec;
    const char* decoder;
    const char* line;  // what the lookup says when there is no decoder
};

class HardwareVendorTable : public ::testing::TestWithParam<TableCase> {};

TEST_P(HardwareVendorTable, NamesTheDecoderOfEachVendorAndCodec) {
    const TableCase& c = GetParam();
    LogCapture log;
    EXPECT_EQ(c.decoder, codec::HardwareDecoderOpener::DecoderNameByVendor(c.vendor, c.codec));
    if (c.line) {
        EXPECT_TRUE(log.has(MVNLogLevel::Debug, kTag, c.line)) << c.line;
    } else {
        EXPECT_TRUE(log.lines().empty());
    }
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, HardwareVendorTable,
    ::testing::Values(TableCase{"NVIDIA", AV_CODEC_ID_HEVC, "hevc_cuvid", nullptr},
                      TableCase{"NVIDIA", AV_CODEC_ID_AV1, "", "hwccel: cuvid not support codec av1"},
                      // VAAPI works inside the stock decoder, named after the codec.
                      TableCase{"Intel", AV_CODEC_ID_MPEG2VIDEO, "mpeg2video", nullptr}));
