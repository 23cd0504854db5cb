#pragma once
#include <string>

namespace Morvane {

// A width and a height. String form "[wxh]".
struct MVNSize {
    float width = 0;
    float height = 0;

    MVNSize() = default;
    MVNSize(float w, float h) : width(w), height(h) {}

    void setSize(float w, float h) { width = w; height = h; }
    bool equals(const MVNSize& other) const;

    std::string toString() const;
    bool fromString(const std::string& s);
    static MVNSize strToSize(const std::string& s);
};

}  // namespace Morvane
