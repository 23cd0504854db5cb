// The adapter vendor comes from the DRM cards' PCI ids, in card order, and
// an override (setter or MVN_GPU_VENDOR) wins over what the machine has.
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <vector>

#include "GPUInfo.h"
#include "TestMedia.h"

using codec::GPUInfo;
namespace fs = std::filesystem;

struct DrmCase {
    const char* name;
    std::vector<std::pair<const char*, const char*>> cards;  // card folder, vendor file content
    const char* vendor;
    const char* device;
};

class GpuVendorDetection : public ::testing::TestWithParam<DrmCase> {};

TEST_P(GpuVendorDetection, MapsThePciIdOfTheFirstKnownCard) {
    const DrmCase& c = GetParam();
    const fs::path drm = fs::current_path() / (std::string("drm-") + c.name);
    fs::remove_all(drm);
    fs::create_directories(drm);
    for (const auto& card : c.cards) {
        fs::create_directories(drm / card.first / "device");
        if (card.second)
            CodecTest::WriteText((drm / card.first / "device" / "vendor").string(), card.second);
    }
    std::string device = "untouched";
    EXPECT_EQ(c.vendor, GPUInfo::DetectVendor(drm.string(), &device));
    EXPECT_EQ(c.device, device);
}

INSTANTIATE_TEST_SUITE_P(
    Cards, GpuVendorDetection,
    ::testing::Values(DrmCase{"Amd", {{"card0", "0x1002\n"}}, "AMD", "card0"},
                      DrmCase{"UpperCaseId", {{"card0", "0x10DE\n"}}, "NVIDIA", "card0"},
                      DrmCase{"UnknownVendor", {{"card0", "0x1af4\n"}}, "", ""},
                      DrmCase{"NoCards", {}, "", ""},
                      DrmCase{"CardWithoutVendorFile", {{"card0", nullptr}}, "", ""},
                      DrmCase{"VirtualCardBeforeNvidia", {{"card0", "0x1234\n"}, {"card1", "0x10de\n"}}, "NVIDIA", "card1"},
                      DrmCase{"LowestCardWins", {{"card10", "0x1002\n"}, {"card2", "0x8086\n"}}, "Intel", "card2"},
                      DrmCase{"ConnectorsAreNotCards", {{"card0-HDMI-A-1", "0x10de\n"}, {"renderD128", "0x10de\n"}}, "", ""}),
    [](const ::testing::TestParamInfo<DrmCase>& info) { return std::string(info.param.name); });

TEST(GpuVendorOverride, SetterWinsOverEnvironmentAndDetection) {
    GPUInfo& gpu = GPUInfo::Instance();
    ::setenv("MVN_GPU_VENDOR", "AMD", 1);
    EXPECT_EQ("AMD", gpu.Vendor());
    gpu.SetVendor("Intel");
    EXPECT_EQ("Intel", gpu.Vendor());
    gpu.SetVendor("");
    EXPECT_EQ("", gpu.Vendor());
    gpu.ResetVendor();
    EXPECT_EQ("AMD", gpu.Vendor());
    ::unsetenv("MVN_GPU_VENDOR");
    EXPECT_EQ(GPUInfo::DetectVendor("/sys/class/drm", nullptr), gpu.Vendor());
}
