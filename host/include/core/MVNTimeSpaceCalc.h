#pragma once
#include <cstdint>
#include <string>

namespace Morvane {

// Brackets a piece of code with start() and end() and logs the processor
// time between them (clock() ticks) at debug level.
class MVNTimeSpaceCalc {
public:
    explicit MVNTimeSpaceCalc(const std::string& name) : mName(name) {}
    virtual ~MVNTimeSpaceCalc() = default;

    // Logs "<name> start..." under "TimeCalc".
    void start();
    // Logs "<name> times:<ticks>" under "TimeCalcAuto"; returns the ticks.
    int64_t end();

private:
    int64_t mStart = 0;
    std::string mName;
};

}  // namespace Morvane
