#pragma once
#include <atomic>
#include <map>
#include <shared_mutex>
#include <string>
#include <vector>

#include "core/MVNBase.h"
#include "core/MVNColor4B.h"
#include "core/MVNRect.h"

namespace Morvane {

class MVNListenerProperty;

// A string-keyed bag of typed values with change notification.
//
// A key lives in exactly one of the seven stores: a setter removes it from
// the others, so the value set last wins. A getter reads its own store first
// and otherwise converts from the store that holds the key where the
// conversion is obvious (int <-> double <-> bool, numeric and "true"/"false"
// strings, "#rrggbbaa" colours, "[x:y wxh]" rectangles, any value to text);
// an absent key or one that doesn't convert gives `def`.
//
// Every setter calls _OnPropertyChanged(key) and then the listeners, unless
// the bag is blocked. Blocks nest: each block() needs its unblock(). Readers
// and writers may run on any threads at once; notifications run on the
// writer's thread without the bag's lock held.
class MVNProperties : public MVNBase {
public:
    MVNProperties();
    ~MVNProperties() override;
    // Copies the values only: listeners and the block state stay behind.
    MVNProperties(const MVNProperties& other);
    MVNProperties& operator=(const MVNProperties& other);

    int getInt32(const char* key, int def) const;
    double getDouble(const char* key, double def) const;
    bool getBoolean(const char* key, bool def) const;
    std::string getString(const char* key, const std::string& def) const;
    std::wstring getWstring(const char* key, const std::wstring& def) const;
    MVNColor4B getColor(const char* key, MVNColor4B def) const;
    MVNRect getRect(const char* key, MVNRect def) const;

    void setInt32(const char* key, int value);
    void setDouble(const char* key, double value);
    void setBoolean(const char* key, bool value);
    void setString(const char* key, const std::string& value);
    void setWstring(const char* key, const std::wstring& value);
    void setColor(const char* key, MVNColor4B value);
    void setRect(const char* key, MVNRect value);

    bool has(const char* key) const;
    // Removes the key from whichever store holds it; true when it was there.
    // Notifies like a setter.
    bool remove(const char* key);
    // All keys, sorted.
    std::vector<std::string> keys() const;

    // Copies every key of `other` except those in `excluded` (may be null),
    // each into the store that holds it there, then notifies each copied key.
    void fromOther(const MVNProperties& other, std::vector<std::string>* excluded);

    void block();
    void unblock();
    bool isBlocked() const { return mBlock.load() > 0; }

    // A listener is not owned; remove it before it is destroyed.
    void addListener(MVNListenerProperty* listener);
    void removeListener(MVNListenerProperty* listener);

    // The bag's own reaction to a change; services override it. Public so
    // that a hook of one class may forward to another's.
    virtual void _OnPropertyChanged(const char* key) {}

private:
    void eraseOthers(const std::string& key, int keep);
    void notify(const char* key);
    void copyFrom(const MVNProperties& other);

    std::map<std::string, int> mInts;
    std::map<std::string, double> mDoubles;
    std::map<std::string, bool> mBools;
    std::map<std::string, std::string> mStrings;
    std::map<std::string, std::wstring> mWstrings;
    std::map<std::string, MVNColor4B> mColors;
    std::map<std::string, MVNRect> mRects;
    std::vector<MVNListenerProperty*> mListeners;
    std::atomic<int> mBlock{0};
    // Guards the stores and the listener list.
    mutable std::shared_mutex mLock;
};

}  // namespace Morvane
