#pragma once
#include <cstdint>

namespace Morvane {

// A stopwatch in milliseconds on the monotonic clock. It stands at 0 until
// start(); pause() freezes the value, start() runs on from it, and
// setTimestamp() moves it without changing whether it runs.
class MVNClock {
public:
    MVNClock() = default;
    virtual ~MVNClock() = default;
    MVNClock(const MVNClock&) = default;
    MVNClock& operator=(const MVNClock&) = default;

    virtual int64_t GetTimestamp() const;

    void start();
    void pause();
    void setTimestamp(int64_t ms);
    bool isRunning() const { return mOrigin != 0; }

    // Milliseconds of the monotonic clock; never 0.
    static int64_t now();

protected:
    int64_t mOrigin = 0;  // now() when last started; 0 while stopped
    int64_t mBase = 0;    // value reached before that start
};

}  // namespace Morvane
