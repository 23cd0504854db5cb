#pragma once
#include <OgreAnimable.h>

namespace Morvane {

class MVNTextEffect;

// The text's alpha as a value a numeric track drives. The scene resets it to
// its base before each frame and adds the track's value: the base is 0.
class TextAlphaAnimaValue : public Ogre::AnimableValue {
public:
    explicit TextAlphaAnimaValue(MVNTextEffect* effect) : Ogre::AnimableValue(REAL), _effect(effect) {}
    ~TextAlphaAnimaValue() override;
    void setCurrentStateAsBaseValue() override;
    void setValue(Ogre::Real v) override;
    void applyDeltaValue(Ogre::Real d) override;

private:
    MVNTextEffect* _effect;  // owns the track that owns this value
};

}  // namespace Morvane
