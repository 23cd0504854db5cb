#include "MVNOgreCoverLayer.h"

namespace Morvane {

MVNOgreCoverLayer::MVNOgreCoverLayer() {}
MVNOgreCoverLayer::~MVNOgreCoverLayer() { release(); }
int MVNOgreCoverLayer::init() { return 0; }
void MVNOgreCoverLayer::update() {}
void MVNOgreCoverLayer::setVisible(bool) {}
void MVNOgreCoverLayer::release() {}
bool MVNOgreCoverLayer::adjustSizeFill(int, int, int, int, int*, int*) { return false; }

}  // namespace Morvane
