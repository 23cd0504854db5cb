#pragma once
#include <OgreAnimable.h>

namespace Morvane {

class MVNTextEffect;

// The number of visible glyphs as a value a numeric track drives; reset to
// its base of 0 before each frame like the alpha.
class TextPrintAnimaValue : public Ogre::AnimableValue {
public:
    explicit TextPrintAnimaValue(MVNTextEffect* effect) : Ogre::AnimableValue(INT), _effect(effect) {}
    ~TextPrintAnimaValue() override;
    void setCurrentStateAsBaseValue() override;
    void setValue(int v) override;
    void applyDeltaValue(int d) override;

private:
    MVNTextEffect* _effect;  // owns the track that owns this value
};

}  // namespace Morvane
