#include "services/MVNProperties.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include "services/MVNListenerProperty.h"
#include "core/MVNUtils.h"

namespace Morvane {

namespace {

// Store numbers, in the order of the members.
enum Store { kInt, kDouble, kBool, kString, kWstring, kColor, kRect };

// A whole string that is a number; leading and trailing blanks allowed.
bool parseNumber(const std::string& s, double& out) {
    const char* begin = s.c_str();
    while (*begin == ' ' || *begin == '\t') ++begin;
    if (*begin == '\0') return false;
    char* end = nullptr;
    errno = 0;
    double v = std::strtod(begin, &end);
    if (end == begin || errno == ERANGE) return false;
    while (*end == ' ' || *end == '\t') ++end;
    if (*end != '\0' || !std::isfinite(v)) return false;
    out = v;
    return true;
}

bool parseBool(const std::string& s, bool& out) {
    if (icaseCompare(s, "true") || s == "1") { out = true; return true; }
    if (icaseCompare(s, "false") || s == "0") { out = false; return true; }
    return false;
}

// Truncation toward zero, clamped to the int range (NaN gives def).
bool toInt(double v, int& out) {
    if (std::isnan(v)) return false;
    if (v >= 2147483647.0) out = 2147483647;
    else if (v <= -2147483648.0) out = -2147483647 - 1;
    else out = static_cast<int>(v);
    return true;
}

// Shortest text that reads back as the same double.
std::string doubleText(double v) {
    char buf[40];
    std::snprintf(buf, sizeof buf, "%.15g", v);
    if (std::strtod(buf, nullptr) != v) std::snprintf(buf, sizeof buf, "%.17g", v);
    return buf;
}

template <class M>
const typename M::mapped_type* find(const M& m, const std::string& key) {
    auto it = m.find(key);
    return it == m.end() ? nullptr : &it->second;
}

}  // namespace

MVNProperties::MVNProperties() = default;

MVNProperties::~MVNProperties() = default;

MVNProperties::MVNProperties(const MVNProperties& other) : MVNBase(other) { copyFrom(other); }

MVNProperties& MVNProperties::operator=(const MVNProperties& other) {
    if (this != &other) {
        MVNBase::operator=(other);
        copyFrom(other);
    }
    return *this;
}

void MVNProperties::copyFrom(const MVNProperties& other) {
    // Copy under the other's lock first, then swap in under ours, so that the
    // two locks are never held together.
    std::map<std::string, int> ints;
    std::map<std::string, double> doubles;
    std::map<std::string, bool> bools;
    std::map<std::string, std::string> strings;
    std::map<std::string, std::wstring> wstrings;
    std::map<std::string, MVNColor4B> colors;
    std::map<std::string, MVNRect> rects;
    {
        std::shared_lock<std::shared_mutex> guard(other.mLock);
        ints = other.mInts;
        doubles = other.mDoubles;
        bools = other.mBools;
        strings = other.mStrings;
        wstrings = other.mWstrings;
        colors = other.mColors;
        rects = other.mRects;
    }
    std::unique_lock<std::shared_mutex> guard(mLock);
    mInts.swap(ints);
    mDoubles.swap(doubles);
    mBools.swap(bools);
    mStrings.swap(strings);
    mWstrings.swap(wstrings);
    mColors.swap(colors);
    mRects.swap(rects);
}

int MVNProperties::getInt32(const char* key, int def) const {
    if (key == nullptr) return def;
    std::string k(key);
    std::shared_lock<std::shared_mutex> guard(mLock);
    if (const int* v = find(mInts, k)) return *v;
    int out = def;
    if (const double* v = find(mDoubles, k)) return toInt(*v, out) ? out : def;
    if (const bool* v = find(mBools, k)) return *v ? 1 : 0;
    if (const std::string* v = find(mStrings, k)) {
        double d = 0;
        return parseNumber(*v, d) && toInt(d, out) ? out : def;
    }
    return def;
}

double MVNProperties::getDouble(const char* key, double def) const {
    if (key == nullptr) return def;
    std::string k(key);
    std::shared_lock<std::shared_mutex> guard(mLock);
    if (const double* v = find(mDoubles, k)) return *v;
    if (const int* v = find(mInts, k)) return *v;
    if (const bool* v = find(mBools, k)) return *v ? 1.0 : 0.0;
    if (const std::string* v = find(mStrings, k)) {
        double d = 0;
        return parseNumber(*v, d) ? d : def;
    }
    return def;
}

bool MVNProperties::getBoolean(const char* key, bool def) const {
    if (key == nullptr) return def;
    std::string k(key);
    std::shared_lock<std::shared_mutex> guard(mLock);
    if (const bool* v = find(mBools, k)) return *v;
    if (const int* v = find(mInts, k)) return *v != 0;
    if (const double* v = find(mDoubles, k)) return *v != 0.0;
    if (const std::string* v = find(mStrings, k)) {
        bool b = def;
        return parseBool(*v, b) ? b : def;
    }
    return def;
}

std::string MVNProperties::getString(const char* key, const std::string& def) const {
    if (key == nullptr) return def;
    std::string k(key);
    std::shared_lock<std::shared_mutex> guard(mLock);
    if (const std::string* v = find(mStrings, k)) return *v;
    if (const int* v = find(mInts, k)) return std::to_string(*v);
    if (const double* v = find(mDoubles, k)) return doubleText(*v);
    if (const bool* v = find(mBools, k)) return *v ? "true" : "false";
    if (const std::wstring* v = find(mWstrings, k)) return to_utf8Str(*v);
    if (const MVNColor4B* v = find(mColors, k)) return v->toString();
    if (const MVNRect* v = find(mRects, k)) return v->toString();
    return def;
}

std::wstring MVNProperties::getWstring(const char* key, const std::wstring& def) const {
    if (key == nullptr) return def;
    std::string k(key);
    {
        std::shared_lock<std::shared_mutex> guard(mLock);
        if (const std::wstring* v = find(mWstrings, k)) return *v;
    }
    static const std::string kMissing("\x01missing");
    std::string s = getString(key, kMissing);
    if (s == kMissing) return def;
    return to_wideStr(s);
}

MVNColor4B MVNProperties::getColor(const char* key, MVNColor4B def) const {
    if (key == nullptr) return def;
    std::string k(key);
    std::shared_lock<std::shared_mutex> guard(mLock);
    if (const MVNColor4B* v = find(mColors, k)) return *v;
    if (const std::string* v = find(mStrings, k)) {
        MVNColor4B c = def;
        return c.fromString(*v) ? c : def;
    }
    return def;
}

MVNRect MVNProperties::getRect(const char* key, MVNRect def) const {
    if (key == nullptr) return def;
    std::string k(key);
    std::shared_lock<std::shared_mutex> guard(mLock);
    if (const MVNRect* v = find(mRects, k)) return *v;
    if (const std::string* v = find(mStrings, k)) {
        MVNRect r;
        return r.fromString(*v) ? r : def;
    }
    return def;
}

void MVNProperties::eraseOthers(const std::string& key, int keep) {
    if (keep != kInt) mInts.erase(key);
    if (keep != kDouble) mDoubles.erase(key);
    if (keep != kBool) mBools.erase(key);
    if (keep != kString) mStrings.erase(key);
    if (keep != kWstring) mWstrings.erase(key);
    if (keep != kColor) mColors.erase(key);
    if (keep != kRect) mRects.erase(key);
}

#define MVN_PROPERTY_SETTER(NAME, TYPE, STORE, KIND)            \
    void MVNProperties::NAME(const char* key, TYPE value) {    \
        if (key == nullptr) return;                            \
        {                                                      \
            std::string k(key);                                \
            std::unique_lock<std::shared_mutex> guard(mLock);  \
            eraseOthers(k, KIND);                              \
            STORE[k] = value;                                  \
        }                                                      \
        notify(key);                                           \
    }

MVN_PROPERTY_SETTER(setInt32, int, mInts, kInt)
MVN_PROPERTY_SETTER(setDouble, double, mDoubles, kDouble)
MVN_PROPERTY_SETTER(setBoolean, bool, mBools, kBool)
MVN_PROPERTY_SETTER(setString, const std::string&, mStrings, kString)
MVN_PROPERTY_SETTER(setWstring, const std::wstring&, mWstrings, kWstring)
MVN_PROPERTY_SETTER(setColor, MVNColor4B, mColors, kColor)
MVN_PROPERTY_SETTER(setRect, MVNRect, mRects, kRect)

#undef MVN_PROPERTY_SETTER

bool MVNProperties::has(const char* key) const {
    if (key == nullptr) return false;
    std::string k(key);
    std::shared_lock<std::shared_mutex> guard(mLock);
    return mInts.count(k) || mDoubles.count(k) || mBools.count(k) || mStrings.count(k) || mWstrings.count(k) ||
           mColors.count(k) || mRects.count(k);
}

bool MVNProperties::remove(const char* key) {
    if (key == nullptr) return false;
    bool removed = false;
    {
        std::string k(key);
        std::unique_lock<std::shared_mutex> guard(mLock);
        removed = mInts.erase(k) + mDoubles.erase(k) + mBools.erase(k) + mStrings.erase(k) + mWstrings.erase(k) +
                      mColors.erase(k) + mRects.erase(k) > 0;
    }
    if (removed) notify(key);
    return removed;
}

std::vector<std::string> MVNProperties::keys() const {
    std::vector<std::string> out;
    {
        std::shared_lock<std::shared_mutex> guard(mLock);
        for (auto& kv : mInts) out.push_back(kv.first);
        for (auto& kv : mDoubles) out.push_back(kv.first);
        for (auto& kv : mBools) out.push_back(kv.first);
        for (auto& kv : mStrings) out.push_back(kv.first);
        for (auto& kv : mWstrings) out.push_back(kv.first);
        for (auto& kv : mColors) out.push_back(kv.first);
        for (auto& kv : mRects) out.push_back(kv.first);
    }
    std::sort(out.begin(), out.end());
    return out;
}

void MVNProperties::fromOther(const MVNProperties& other, std::vector<std::string>* excluded) {
    if (&other == this) return;
    MVNProperties copy(other);  // a snapshot, so that only one lock is held at a time
    auto skip = [excluded](const std::string& k) {
        return excluded != nullptr && std::find(excluded->begin(), excluded->end(), k) != excluded->end();
    };
    std::vector<std::string> copied;
    {
        std::unique_lock<std::shared_mutex> guard(mLock);
        auto take = [&](auto& theirs, auto& ours, int kind) {
            for (auto& kv : theirs) {
                if (skip(kv.first)) continue;
                eraseOthers(kv.first, kind);
                ours[kv.first] = kv.second;
                copied.push_back(kv.first);
            }
        };
        take(copy.mInts, mInts, kInt);
        take(copy.mDoubles, mDoubles, kDouble);
        take(copy.mBools, mBools, kBool);
        take(copy.mStrings, mStrings, kString);
        take(copy.mWstrings, mWstrings, kWstring);
        take(copy.mColors, mColors, kColor);
        take(copy.mRects, mRects, kRect);
    }
    std::sort(copied.begin(), copied.end());
    for (const std::string& k : copied) notify(k.c_str());
}

void MVNProperties::block() { ++mBlock; }

void MVNProperties::unblock() {
    // An unmatched unblock must not leave the bag silenced for good by a
    // negative count.
    int cur = mBlock.load();
    while (cur > 0 && !mBlock.compare_exchange_weak(cur, cur - 1)) {
    }
}

void MVNProperties::addListener(MVNListenerProperty* listener) {
    if (listener == nullptr) return;
    std::unique_lock<std::shared_mutex> guard(mLock);
    if (std::find(mListeners.begin(), mListeners.end(), listener) == mListeners.end()) mListeners.push_back(listener);
}

void MVNProperties::removeListener(MVNListenerProperty* listener) {
    std::unique_lock<std::shared_mutex> guard(mLock);
    mListeners.erase(std::remove(mListeners.begin(), mListeners.end(), listener), mListeners.end());
}

void MVNProperties::notify(const char* key) {
    if (mBlock.load() > 0) return;
    _OnPropertyChanged(key);
    std::vector<MVNListenerProperty*> listeners;
    {
        std::shared_lock<std::shared_mutex> guard(mLock);
        if (mListeners.empty()) return;
        listeners = mListeners;
    }
    for (MVNListenerProperty* l : listeners) {
        // A listener removed by an earlier one in this round is skipped.
        bool still = false;
        {
            std::shared_lock<std::shared_mutex> guard(mLock);
            still = std::find(mListeners.begin(), mListeners.end(), l) != mListeners.end();
        }
        if (still) l->onPropertyChanged(this, key);
    }
}

}  // namespace Morvane
