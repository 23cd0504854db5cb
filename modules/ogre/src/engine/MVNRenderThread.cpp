#include "engine/MVNRenderThread.h"

#include "engine/MVNOgreRenderQueue.h"

namespace Morvane {

MVNRenderThread::MVNRenderThread(MVNOgreRenderQueue* queue) : mQueue(queue) {}

MVNRenderThread::~MVNRenderThread() = default;

void MVNRenderThread::start() { Thread11::start(); }

void MVNRenderThread::join() { Thread11::join(); }

void MVNRenderThread::run() { mQueue->_work(); }

}  // namespace Morvane
