#pragma once
#include <string>

#include "but/Mutex11.h"

namespace codec {

// The vendor of the machine's main display adapter, as the hardware decoder
// selection needs it: "Intel", "NVIDIA", "AMD", or empty when none is known.
// On Linux it comes from /sys/class/drm/card*/device/vendor. The environment
// variable MVN_GPU_VENDOR, when set (even to ""), and SetVendor override it.
class GPUInfo {
public:
    static GPUInfo& Instance();

    // Override first, then MVN_GPU_VENDOR, then the adapters found at the
    // first call.
    std::string Vendor();
    // The DRM device the vendor was read from ("card0"), empty when none.
    std::string Device();
    // Forces the vendor, for tests and for machines whose adapter is known.
    void SetVendor(const std::string& vendor);
    // Drops the override; the environment and detection apply again.
    void ResetVendor();

    // Maps a PCI vendor id ("0x10de") to a vendor name; empty for others.
    static std::string VendorName(const std::string& pciId);
    // Scans `drmDir` (normally /sys/class/drm) for card<N>/device/vendor in
    // card order and returns the first known vendor; `device` gets its card.
    static std::string DetectVendor(const std::string& drmDir, std::string* device);

private:
    GPUInfo() = default;

    but::Mutex11 mLock;
    bool mDetected = false;
    bool mOverridden = false;
    std::string mOverride;
    std::string mVendor;
    std::string mDevice;
};

}  // namespace codec
