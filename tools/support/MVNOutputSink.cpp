#include "MVNOutputSink.h"

#include <algorithm>
#include <cctype>

#include "MVNImageSequenceSink.h"
#include "MVNRawStreamSink.h"
#include "MVNVideoFileSink.h"

namespace Morvane {

std::unique_ptr<MVNOutputSink> MVNOutputSink::create(const std::string& output, int firstNumber, std::string& error) {
    if (output == "-") return std::make_unique<MVNRawStreamSink>();
    if (output.find('%') != std::string::npos) {
        if (MVNImageSequenceSink::fileName(output, firstNumber).empty()) {
            error = "the output pattern needs exactly one %d conversion: " + output;
            return nullptr;
        }
        return std::make_unique<MVNImageSequenceSink>(output, firstNumber);
    }
    auto dot = output.rfind('.');
    std::string ext = dot == std::string::npos ? "" : output.substr(dot + 1);
    std::transform(ext.begin(), ext.end(), ext.begin(), [](unsigned char c) { return std::tolower(c); });
    if (ext == "mp4" || ext == "mkv") return std::make_unique<MVNVideoFileSink>(output);
    error = "unknown output kind: " + output + " (use .mp4, .mkv, a %d pattern or -)";
    return nullptr;
}

}  // namespace Morvane
