#pragma once
// Collects every log line while alive, for assertions on exact log texts.
#include <algorithm>
#include <mutex>
#include <string>
#include <vector>

#include "core/MVNLog.h"

namespace MorvaneTest {

class LogCapture {
public:
    LogCapture() {
        handle_ = Morvane::addLogSink([this](const Morvane::MVNLogLine& line) {
            std::lock_guard<std::mutex> guard(lock_);
            lines_.push_back(line);
        });
    }
    ~LogCapture() { Morvane::removeLogSink(handle_); }
    LogCapture(const LogCapture&) = delete;
    LogCapture& operator=(const LogCapture&) = delete;

    std::vector<Morvane::MVNLogLine> lines() const {
        std::lock_guard<std::mutex> guard(lock_);
        return lines_;
    }
    // Number of lines with exactly this level, tag and message.
    int count(Morvane::MVNLogLevel level, const std::string& tag, const std::string& message) const {
        std::lock_guard<std::mutex> guard(lock_);
        return static_cast<int>(std::count_if(lines_.begin(), lines_.end(), [&](const Morvane::MVNLogLine& l) {
            return l.level == level && l.tag == tag && l.message == message;
        }));
    }
    bool has(Morvane::MVNLogLevel level, const std::string& tag, const std::string& message) const {
        return count(level, tag, message) > 0;
    }
    // Number of lines whose message contains `part`, any level and tag.
    int countContaining(const std::string& part) const {
        std::lock_guard<std::mutex> guard(lock_);
        return static_cast<int>(std::count_if(lines_.begin(), lines_.end(), [&](const Morvane::MVNLogLine& l) {
            return l.message.find(part) != std::string::npos;
        }));
    }
    void clear() {
        std::lock_guard<std::mutex> guard(lock_);
        lines_.clear();
    }

private:
    mutable std::mutex lock_;
    std::vector<Morvane::MVNLogLine> lines_;
    int handle_ = 0;
};

}  // namespace MorvaneTest
