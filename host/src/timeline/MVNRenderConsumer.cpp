#include "timeline/MVNRenderConsumer.h"

#include <chrono>

#include "core/MVNAudioBlock.h"
#include "core/MVNByteBuffer.h"
#include "core/MVNByteBufferPool.h"
#include "core/MVNColorType.h"
#include "core/MVNFrame.h"
#include "core/MVNLog.h"
#include "services/MVNProducer.h"
#include "services/MVNRenderSystem.h"

namespace Morvane {

static const char* TAG = "Morvane::MVNRenderConsumer";

// How long a picture may take to come back before its position counts as
// lost; the render queue gives up on a waiting caller after as long.
static const auto kFrameTimeout = std::chrono::seconds(10);

MVNRenderConsumer::MVNRenderConsumer(const MVNProfile& profile, MVNRenderSystem* renderSystem, ReadMode mode)
    : MVNConsumer(profile), mRenderSystem(renderSystem), mMode(mode) {}

MVNRenderConsumer::~MVNRenderConsumer() {
    stop();
    dropPending();
}

int MVNRenderConsumer::renderRange(int first, int last) {
    MVNProducer* producer = connectedProducer();
    if (!producer) {
        log_error(TAG, "renderRange failed, no producer connected");
        return -1;
    }
    if (!mRenderSystem) {
        log_error(TAG, "renderRange failed, render system is null");
        return -1;
    }
    if (last < first) return 0;
    mStopRequested = false;
    int before = mDelivered.load();
    if (mMode == READ_LISTENER) mRenderSystem->registerFrameListener(this);

    int rc = 0;
    int next = first;  // the oldest position whose picture is still to come
    int issued = first - 1;
    for (int position = first; position <= last && !mStopRequested; ++position) {
        setFrame(position);
        if (renderOne(position) != 0 || deliverSound(position) != 0) {
            rc = -1;
            break;
        }
        issued = position;
        if (mMode == READ_SYNC) continue;
        // At most two reads in flight: the reader's hand-over keeps two.
        bool wait = issued - next >= 1;
        if (collectReady(next, issued - (wait ? 1 : 0), wait) != 0) {
            rc = -1;
            break;
        }
    }
    if (rc == 0 && mMode != READ_SYNC && collectReady(next, issued, true) != 0) rc = -1;
    if (mMode == READ_LISTENER) {
        mRenderSystem->unregisterFrameListener(this);
        dropPending();
    }
    if (rc != 0) return -1;
    return mDelivered.load() - before;
}

int MVNRenderConsumer::renderSoundRange(int first, int last) {
    if (!connectedProducer()) {
        log_error(TAG, "renderSoundRange failed, no producer connected");
        return -1;
    }
    if (!mSoundSink) {
        log_error(TAG, "renderSoundRange failed, no sound sink");
        return -1;
    }
    mStopRequested = false;
    int delivered = 0;
    for (int position = first; position <= last && !mStopRequested; ++position) {
        if (deliverSound(position) != 0) return -1;
        ++delivered;
    }
    return delivered;
}

int MVNRenderConsumer::renderOne(int position) {
    MVNFrame* frame = nullptr;
    // The producer draws into the renderer's scene; its own frame isn't
    // needed here, the picture comes back from the render system.
    if (connectedProducer()->getImage(position, &frame) == 0 && frame) MVNFrame::pushBackPool(frame);
    if (mMode != READ_SYNC) {
        mRenderSystem->updateRenderImage(position);
        return 0;
    }
    MVNByteBuffer* image = mRenderSystem->getRenderImage();
    if (!image) {
        log_error(TAG, "render failed at position %d, no picture read back", position);
        return -1;
    }
    int w = mRenderSystem->getRenderWindowWidth();
    int h = mRenderSystem->getRenderWindowHeight();
    int rc = 0;
    if (mSink) rc = mSink(Picture{position, image->ptr(), w, h, w * 4, MVN_COLOR_RGBA});
    MVNByteBufferPool::sRelease(image);
    ++mDelivered;
    if (rc != 0) {
        log_info(TAG, "picture sink stopped the run at position %d", position);
        return -1;
    }
    return 0;
}

int MVNRenderConsumer::deliverSound(int position) {
    if (!mSoundSink) return 0;
    MVNFrame* sound = nullptr;
    if (connectedProducer()->getAudio(position, nullptr, &sound) != 0 || sound == nullptr ||
        MVNAudioBlock::samples(sound) == nullptr) {
        MVNFrame::pushBackPool(sound);
        sound = MVNAudioBlock::pullSilence(MVNAudioBlock::samplesOf(mProfile, position));
        if (sound == nullptr) {
            log_error(TAG, "sound of position %d lost, no frame in the pool", position);
            return -1;
        }
    }
    int rc = mSoundSink(Sound{position, MVNAudioBlock::samples(sound), sound->samples(), sound->frequency(),
                              sound->channels()});
    MVNFrame::pushBackPool(sound);
    if (rc != 0) log_info(TAG, "sound sink stopped the run at position %d", position);
    return rc;
}

int MVNRenderConsumer::collectReady(int& next, int last, bool wait) {
    while (next <= last) {
        MVNFrame* frame = takeFrame(wait);
        if (!frame) {
            if (!wait) return 0;
            for (; next <= last; ++next) {
                log_warn(TAG, "picture of position %d lost", next);
                ++mLost;
            }
            return 0;
        }
        // A frame without a position is the next one in line.
        int position = frame->frames() >= 0 ? frame->frames() : next;
        if (position < next) {
            // Left over from an earlier run: not ours to deliver.
            MVNFrame::pushBackPool(frame);
            continue;
        }
        for (; next < position; ++next) {
            log_warn(TAG, "picture of position %d lost", next);
            ++mLost;
        }
        int rc = deliverFrame(frame, position);
        next = position + 1;
        if (rc != 0) return -1;
    }
    return 0;
}

int MVNRenderConsumer::deliverFrame(MVNFrame* frame, int position) {
    int rc = 0;
    if (mSink && frame->buffer()) {
        rc = mSink(Picture{position, frame->buffer()->ptr(), frame->width(), frame->height(), frame->width() * 4,
                           frame->colorFormat()});
    }
    MVNFrame::pushBackPool(frame);
    ++mDelivered;
    if (rc != 0) log_info(TAG, "picture sink stopped the run at position %d", position);
    return rc;
}

MVNFrame* MVNRenderConsumer::takeFrame(bool wait) {
    auto deadline = std::chrono::steady_clock::now() + kFrameTimeout;
    if (mMode == READ_LISTENER) {
        std::unique_lock<std::mutex> guard(mFramesLock);
        if (wait) {
            mFramesReady.wait_until(guard, deadline, [this]() { return !mFrames.empty() || mStopRequested; });
        }
        if (mFrames.empty()) return nullptr;
        MVNFrame* frame = mFrames.front();
        mFrames.pop_front();
        return frame;
    }
    for (;;) {
        if (MVNFrame* frame = mRenderSystem->getRenderFrame()) return frame;
        if (!wait || mStopRequested || std::chrono::steady_clock::now() > deadline) return nullptr;
        std::this_thread::sleep_for(std::chrono::milliseconds(1));
    }
}

void MVNRenderConsumer::onFrameRendered(MVNFrame* frame) {
    // Render thread: only hand the frame over; the sink runs on ours.
    {
        std::lock_guard<std::mutex> guard(mFramesLock);
        mFrames.push_back(frame);
    }
    mFramesReady.notify_one();
}

void MVNRenderConsumer::dropPending() {
    std::lock_guard<std::mutex> guard(mFramesLock);
    for (MVNFrame* frame : mFrames) MVNFrame::pushBackPool(frame);
    mFrames.clear();
}

int MVNRenderConsumer::start() {
    if (mRunning) {
        log_warn(TAG, "start ignored, already running");
        return 0;
    }
    MVNProducer* producer = connectedProducer();
    if (!producer || !mRenderSystem) {
        log_error(TAG, "start failed, %s", producer ? "render system is null" : "no producer connected");
        return -1;
    }
    if (mThread.joinable()) mThread.join();
    int first = frame();
    int last = getInt32("out", producer->getOut());
    mRunning = true;
    mThread = std::thread([this, first, last]() {
        renderRange(first, last);
        mRunning = false;
    });
    return 0;
}

void MVNRenderConsumer::stop() {
    mStopRequested = true;
    mFramesReady.notify_all();
    if (mThread.joinable() && mThread.get_id() != std::this_thread::get_id()) mThread.join();
}

bool MVNRenderConsumer::isStopped() { return !mRunning; }

void MVNRenderConsumer::waitWorkEnd() {
    if (mThread.joinable() && mThread.get_id() != std::this_thread::get_id()) mThread.join();
}

}  // namespace Morvane
