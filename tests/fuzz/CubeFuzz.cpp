// .cube files from anywhere: a table that loads has its picture, whole and
// in range; one that doesn't is empty and says why.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzSupport.h"
#include "core/MVNLut3d.h"

using namespace Morvane;
using MorvaneFuzz::check;

extern "C" int LLVMFuzzerInitialize(int*, char***) {
    MorvaneFuzz::quietLog();
    return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    MVNLut3d lut;
    if (lut.loadFromString(std::string(reinterpret_cast<const char*>(data), size), "fuzz.cube") == 0) {
        const int n = lut.lutSize();
        check(n >= 2 && n <= 128, "a loaded table has a size the GPU takes");
        check(lut.data() != nullptr, "a loaded table has its picture");
        // Touch the last byte of the picture: a short image is a finding.
        volatile unsigned char last = lut.data()[static_cast<size_t>(n) * n * n * 3 - 1];
        (void)last;
    } else {
        check(lut.lutSize() == 0 && lut.data() == nullptr, "a refused table is empty");
        check(!lut.lastError().empty(), "a refused table says why");
    }
    return 0;
}
