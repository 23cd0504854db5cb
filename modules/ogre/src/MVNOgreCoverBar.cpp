#include "MVNOgreCoverBar.h"

namespace Morvane {

MVNOgreCoverBar::MVNOgreCoverBar() {}
MVNOgreCoverBar::~MVNOgreCoverBar() {}
void MVNOgreCoverBar::setGeometry(const MVNRect& rect) { mGeometry = rect; }
void MVNOgreCoverBar::setVisible(bool) {}
bool MVNOgreCoverBar::isVisible() const { return false; }
void MVNOgreCoverBar::_init() {}
void MVNOgreCoverBar::_setGeometry() {}
void MVNOgreCoverBar::_release() {}

}  // namespace Morvane
