#include "core/MVNByteBuffer.h"

#include <cstring>
#include <new>
#include <stdexcept>

namespace Morvane {

MVNByteBuffer::MVNByteBuffer() : mGood(true) {}

MVNByteBuffer::MVNByteBuffer(int size, uint8_t fill) {
    if (resize(size) == 0 && size > 0) {
        std::memset(data.data(), fill, static_cast<size_t>(size));
    }
}

int MVNByteBuffer::resize(int size) {
    if (size < 0) {
        return -1;
    }
    if (static_cast<size_t>(size) > data.size()) {
        try {
            data.resize(static_cast<size_t>(size));
        } catch (const std::bad_alloc&) {
            return -1;
        } catch (const std::length_error&) {
            return -1;
        }
    }
    mSize = size;
    mGood = true;
    return 0;
}

}  // namespace Morvane
