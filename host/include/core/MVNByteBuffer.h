#pragma once
#include <cstdint>
#include <vector>

#include "core/MVNBase.h"

namespace Morvane {

// A growable block of bytes. size() is what was asked for; bufferSize() what
// the storage holds, which can be more.
class MVNByteBuffer : public MVNBase {
public:
    MVNByteBuffer();
    MVNByteBuffer(int size, uint8_t fill);
    MVNByteBuffer(const MVNByteBuffer&) = default;
    MVNByteBuffer& operator=(const MVNByteBuffer&) = default;
    ~MVNByteBuffer() override = default;

    uint8_t* ptr() { return data.empty() ? nullptr : data.data(); }
    const uint8_t* ptr() const { return data.empty() ? nullptr : data.data(); }
    int size() const { return mSize; }
    int bufferSize() const { return static_cast<int>(data.size()); }
    bool good() const { return mGood; }
    // Grows the storage to at least `size` bytes (never shrinks it) and sets
    // size(). 0 on success, -1 when memory runs out (the buffer is unchanged).
    int resize(int size);

protected:
    std::vector<uint8_t> data;
    int mSize = 0;
    bool mGood = false;
};

}  // namespace Morvane
