#include "MVNRawStreamSink.h"

#include <unistd.h>

#include <cerrno>
#include <cstring>

namespace Morvane {
namespace {

bool writeAll(const uint8_t* data, size_t n) {
    while (n > 0) {
        ssize_t done = ::write(STDOUT_FILENO, data, n);
        if (done < 0) {
            if (errno == EINTR) continue;
            return false;
        }
        data += done;
        n -= static_cast<size_t>(done);
    }
    return true;
}

}  // namespace

int MVNRawStreamSink::open(int width, int height, int, int, int colorType) {
    mWidth = width;
    mHeight = height;
    mSwap = colorType == 28;
    mRow.resize(static_cast<size_t>(width) * 4);
    return 0;
}

int MVNRawStreamSink::write(const uint8_t* pixels, int stride) {
    for (int y = 0; y < mHeight; ++y) {
        const uint8_t* src = pixels + static_cast<size_t>(y) * stride;
        const uint8_t* out = src;
        if (mSwap) {
            for (int x = 0; x < mWidth; ++x) {
                mRow[4 * x + 0] = src[4 * x + 2];
                mRow[4 * x + 1] = src[4 * x + 1];
                mRow[4 * x + 2] = src[4 * x + 0];
                mRow[4 * x + 3] = src[4 * x + 3];
            }
            out = mRow.data();
        }
        if (!writeAll(out, static_cast<size_t>(mWidth) * 4)) {
            mError = std::string("cannot write to standard output: ") + std::strerror(errno);
            return -1;
        }
    }
    return 0;
}

int MVNRawStreamSink::finish() { return 0; }

}  // namespace Morvane
