#include "text/TextAlphaAnimaValue.h"

#include "text/MVNTextEffect.h"

namespace Morvane {

TextAlphaAnimaValue::~TextAlphaAnimaValue() = default;

void TextAlphaAnimaValue::setCurrentStateAsBaseValue() { setAsBaseValue(_effect->alpha()); }

void TextAlphaAnimaValue::setValue(Ogre::Real v) { _effect->setAlpha(v); }

void TextAlphaAnimaValue::applyDeltaValue(Ogre::Real d) { setValue(_effect->alpha() + d); }

}  // namespace Morvane
