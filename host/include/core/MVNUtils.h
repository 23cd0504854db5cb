#pragma once
// Small helpers for logs, paths and text used across the host and modules.
#include <cstdint>
#include <string>

namespace Morvane {

// Names of the MVNInputType / MVNOutputType values for log lines; "unknown"
// for a value outside the enumeration.
const char* getInputName(int type);
const char* getOutputName(int type);

// The extension of the last path component with its dot (".jpg"), in the
// case it was written; empty when there is none. A leading dot alone
// (".bashrc") is a hidden name, not an extension.
std::string getExtension(const std::string& path);

// `text` with its control characters escaped (\n, \r, \t, \xNN), so that a
// message quoting a user's file names and keys stays one line.
std::string oneLine(const std::string& text);

// True when both strings are equal without regard to ASCII case.
bool icaseCompare(const std::string& a, const std::string& b);

// Wide text (UTF-32 on this platform) to UTF-8 and back. Code points that
// cannot be encoded become U+FFFD; malformed UTF-8 bytes likewise.
std::string to_utf8Str(std::wstring text);
std::wstring to_wideStr(const std::string& utf8);

// The kernel's id of the calling thread, as the log lines show it.
uint64_t getCurrentThreadId();

namespace ports {
namespace path {
// An absolute, normalised form of `path`. Backslashes count as separators
// so that paths written for other platforms work here; a relative path is
// taken from the working directory. Empty for null or empty input.
std::string abspath(const char* path);
}  // namespace path
}  // namespace ports

}  // namespace Morvane
