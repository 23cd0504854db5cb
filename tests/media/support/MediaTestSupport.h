#pragma once
// The media-producer tests' media (made once per build tree by
// make-media.sh) and the module that serves them, loaded as applications
// load it.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "timeline/MVNFactory.h"
#include "services/MVNProducer.h"
#include "services/MVNProperties.h"
#include "timeline/MVNModule.h"
#include "MVNTestPaths.h"

namespace MediaTest {

inline std::string mediaDir() {
    static const std::string dir = [] {
        std::string out = std::string(MVN_BINARY_DIR) + "/test-media/media";
        std::string cmd = "sh " + std::string(MVN_SOURCE_DIR) + "/tests/media/make-media.sh " + out;
        if (std::system(cmd.c_str()) != 0) ADD_FAILURE() << "making the test media failed: " << cmd;
        return out;
    }();
    return dir;
}

inline std::string mediaPath(const std::string& name) { return mediaDir() + "/" + name; }

inline std::vector<uint8_t> readBytes(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    return std::vector<uint8_t>(std::istreambuf_iterator<char>(in), {});
}

inline void loadMediaModule() { ASSERT_EQ(Morvane::loadModule(Morvane::findModule("libMVNMedia.so")), 0); }

// A producer of `service` on `resource`, built and initialised through the
// registry; null when refused.
inline Morvane::MVNProducer* makeClip(const Morvane::MVNProfile& profile, const std::string& service,
                                      const std::string& resource, std::string& id) {
    Morvane::MVNProperties p;
    p.setString("service", service);
    p.setString("resource", resource);
    id = Morvane::createProducer(profile, p);
    return Morvane::getProducerById(id);
}

}  // namespace MediaTest
