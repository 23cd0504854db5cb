#pragma once
// The consumer that collects composed pictures from a render system. For
// each position it lets the connected producer render (getImage), then reads
// the picture back in one of three ways and hands it to the picture sink:
//   sync      getRenderImage, the read happens inside the call;
//   async     updateRenderImage(position), the frame is picked up with
//             getRenderFrame one position later, so the read of a position
//             overlaps the rendering of the next;
//   listener  the consumer registers as the frame listener and receives
//             each frame on the render thread, queued for delivery here.
// With a sound sink the consumer also asks the producer for the sound of
// each position (getAudio) and hands it on, silence where nothing sounds:
// the sound of position N is exactly the samples that begin where N's
// picture begins (MVNAudioBlock), so the two never drift apart.
// Every buffer and frame goes back to its pool once the sink has seen it.
#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>

#include "services/MVNConsumer.h"
#include "services/MVNFrameListener.h"

namespace Morvane {

class MVNRenderSystem;

class MVNRenderConsumer : public MVNConsumer, public MVNFrameListener {
public:
    enum ReadMode { READ_SYNC = 0, READ_ASYNC = 1, READ_LISTENER = 2 };

    // One collected picture, valid only during the sink call: width x height
    // pixels, rows top first, `stride` bytes a row, of `colorType` (26:
    // R,G,B,A bytes).
    struct Picture {
        int position;
        const uint8_t* pixels;
        int width;
        int height;
        int stride;
        int colorType;
    };
    // Returns 0 to go on; anything else stops the run.
    using PictureSink = std::function<int(const Picture&)>;

    // The render system is not owned and must be initialised before a run.
    MVNRenderConsumer(const MVNProfile& profile, MVNRenderSystem* renderSystem, ReadMode mode = READ_SYNC);
    ~MVNRenderConsumer() override;

    // The sound of one position: `count` samples of `channels` interleaved
    // floats at `rate`, valid only during the sink call.
    struct Sound {
        int position;
        const float* samples;
        int count;
        int rate;
        int channels;
    };
    // Returns 0 to go on; anything else stops the run.
    using SoundSink = std::function<int(const Sound&)>;

    void setPictureSink(PictureSink sink) { mSink = std::move(sink); }
    // Without a sound sink no sound is asked for.
    void setSoundSink(SoundSink sink) { mSoundSink = std::move(sink); }
    ReadMode readMode() const { return mMode; }

    // Renders first..last in order and delivers each picture; blocks. The
    // number of pictures delivered, or -1 (logged) when nothing can run: no
    // producer, no render system, a read that failed, or a sink that
    // stopped. Positions whose picture never came back are logged.
    int renderRange(int first, int last);
    // The sound of first..last alone, position by position to the sound
    // sink, exactly as renderRange delivers it, with nothing drawn or read
    // back: no render system is needed. The number of positions delivered,
    // or -1 (logged) with no producer, no sound sink or a sink that stopped.
    int renderSoundRange(int first, int last);

    // Runs renderRange(frame(), out) on a thread of its own, where out is
    // the producer's "out" (or the property "out" of the consumer when set).
    int start() override;
    void stop() override;
    bool isStopped() override;
    // Waits for a started run to end.
    void waitWorkEnd() override;

    // Pictures delivered and positions lost since construction.
    int delivered() const { return mDelivered.load(); }
    int lost() const { return mLost.load(); }

    // Frame listener side, on the render thread.
    void onFrameRendered(MVNFrame* frame) override;

private:
    int renderOne(int position);
    int deliverSound(int position);
    int deliverFrame(MVNFrame* frame, int expected);
    // Frames that are back from the reader, without waiting; -1 on a stop.
    int collectReady(int& next, int last, bool wait);
    MVNFrame* takeFrame(bool wait);
    void dropPending();

    MVNRenderSystem* mRenderSystem;
    ReadMode mMode;
    PictureSink mSink;
    SoundSink mSoundSink;
    std::atomic<bool> mStopRequested{false};
    std::atomic<bool> mRunning{false};
    std::thread mThread;
    std::atomic<int> mDelivered{0};
    std::atomic<int> mLost{0};
    // Frames handed over by the render thread in listener mode.
    std::mutex mFramesLock;
    std::condition_variable mFramesReady;
    std::deque<MVNFrame*> mFrames;
};

}  // namespace Morvane
