#include "text/TextPrintAnimaValue.h"

#include "text/MVNTextEffect.h"

namespace Morvane {

TextPrintAnimaValue::~TextPrintAnimaValue() = default;

void TextPrintAnimaValue::setCurrentStateAsBaseValue() { setAsBaseValue(_effect->printCount()); }

void TextPrintAnimaValue::setValue(int v) { _effect->setPrintCount(v); }

void TextPrintAnimaValue::applyDeltaValue(int d) { setValue(_effect->printCount() + d); }

}  // namespace Morvane
