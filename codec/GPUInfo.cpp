#include "GPUInfo.h"

#include <algorithm>
#include <cctype>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <vector>

#include "but/AutoLock.h"

namespace codec {

GPUInfo& GPUInfo::Instance() {
    static GPUInfo info;
    return info;
}

std::string GPUInfo::Vendor() {
    but::AutoLock guard(mLock);
    if (mOverridden)
        return mOverride;
    if (const char* env = std::getenv("MVN_GPU_VENDOR"))
        return env;
    if (!mDetected) {
        mVendor = DetectVendor("/sys/class/drm", &mDevice);
        mDetected = true;
    }
    return mVendor;
}

std::string GPUInfo::Device() {
    Vendor();
    but::AutoLock guard(mLock);
    return mDevice;
}

void GPUInfo::SetVendor(const std::string& vendor) {
    but::AutoLock guard(mLock);
    mOverridden = true;
    mOverride = vendor;
}

void GPUInfo::ResetVendor() {
    but::AutoLock guard(mLock);
    mOverridden = false;
    mOverride.clear();
}

std::string GPUInfo::VendorName(const std::string& pciId) {
    std::string id;
    for (char c : pciId)
        if (!std::isspace(static_cast<unsigned char>(c)))
            id.push_back(static_cast<char>(std::tolower(static_cast<unsigned char>(c))));
    if (id == "0x8086")
        return "Intel";
    if (id == "0x10de")
        return "NVIDIA";
    if (id == "0x1002")
        return "AMD";
    return "";
}

std::string GPUInfo::DetectVendor(const std::string& drmDir, std::string* device) {
    namespace fs = std::filesystem;
    std::error_code ec;
    // Only the cards themselves: card0-HDMI-A-1 and friends are connectors.
    std::vector<std::pair<int, std::string>> cards;
    for (fs::directory_iterator it(drmDir, ec), end; !ec && it != end; it.increment(ec)) {
        std::string name = it->path().filename().string();
        if (name.size() <= 4 || name.compare(0, 4, "card") != 0)
            continue;
        std::string digits = name.substr(4);
        if (!std::all_of(digits.begin(), digits.end(), [](char c) { return std::isdigit(static_cast<unsigned char>(c)); }))
            continue;
        cards.emplace_back(std::atoi(digits.c_str()), name);
    }
    std::sort(cards.begin(), cards.end());
    for (const auto& card : cards) {
        std::ifstream in(drmDir + "/" + card.second + "/device/vendor");
        std::string id;
        if (!(in >> id))
            continue;
        std::string vendor = VendorName(id);
        if (!vendor.empty()) {
            if (device)
                *device = card.second;
            return vendor;
        }
    }
    if (device)
        device->clear();
    return "";
}

}  // namespace codec
