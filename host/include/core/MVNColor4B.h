#pragma once
#include <cstdint>
#include <string>

namespace Morvane {

// A colour of four bytes. String form "#rrggbbaa". The default alpha is the
// integer 1, not 255: a default colour is (0, 0, 0, 1).
struct MVNColor4B {
    uint8_t r = 0;
    uint8_t g = 0;
    uint8_t b = 0;
    uint8_t a = 1;

    MVNColor4B() = default;
    MVNColor4B(uint8_t pr, uint8_t pg, uint8_t pb, uint8_t pa) : r(pr), g(pg), b(pb), a(pa) {}
    explicit MVNColor4B(const std::string& s) { fromString(s); }

    void set(uint8_t pr, uint8_t pg, uint8_t pb, uint8_t pa) { r = pr; g = pg; b = pb; a = pa; }
    bool operator==(const MVNColor4B& o) const { return r == o.r && g == o.g && b == o.b && a == o.a; }
    bool operator!=(const MVNColor4B& o) const { return !(*this == o); }

    std::string toString() const;
    // Exactly nine characters starting with '#'; otherwise false and unchanged.
    bool fromString(const std::string& s);
    static MVNColor4B strToColor4B(const std::string& s);
};

}  // namespace Morvane
