#pragma once

namespace Morvane {

// A media decoder that a producer reads from. Producers hold it by
// std::shared_ptr so that a clip and its clones can share one open file.
class MVNDecoder {
public:
    virtual ~MVNDecoder() = default;
};

}  // namespace Morvane
