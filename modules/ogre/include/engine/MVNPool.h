#pragma once
#include <deque>
#include <set>

#include "core/AutoLock.h"
#include "core/MVNLog.h"
#include "core/Mutex.h"

namespace Morvane {

// A free list of reusable objects. It starts empty, has no upper bound and
// grows to the largest number of objects that were ever out at once; the
// objects it holds are deleted with the pool.
template <typename T>
class MVNPool {
public:
    MVNPool() = default;
    MVNPool(const MVNPool&) = delete;
    MVNPool& operator=(const MVNPool&) = delete;

    // Deletes what the pool holds. An object handed back twice lies in the
    // pool twice: it is deleted once and the second entry is reported.
    ~MVNPool() {
        AutoLock guard(mLock);
        std::set<T*> deleted;
        while (!mItems.empty()) {
            T* item = mItems.front();
            mItems.pop_front();
            if (!deleted.insert(item).second) {
                log_error("MVNPool", "multi delete obj:%p", static_cast<void*>(item));
                continue;
            }
            delete item;
        }
    }

    // The oldest object handed back, or null when the pool is empty.
    T* get() {
        AutoLock guard(mLock);
        if (mItems.empty()) {
            return nullptr;
        }
        T* item = mItems.front();
        mItems.pop_front();
        return item;
    }

    // Hands an object back; the pool owns it until the next get().
    void put(T* item) {
        AutoLock guard(mLock);
        mItems.push_back(item);
    }

    size_t size() {
        AutoLock guard(mLock);
        return mItems.size();
    }

private:
    std::deque<T*> mItems;
    Mutex mLock;
};

}  // namespace Morvane
