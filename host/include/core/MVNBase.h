#pragma once

namespace Morvane {

// Root of the framework's objects: a virtual destructor and a numeric id.
class MVNBase {
public:
    MVNBase();
    virtual ~MVNBase() = default;
    MVNBase(const MVNBase&) = default;
    MVNBase& operator=(const MVNBase&) = default;

    unsigned id() const { return mId; }
    void setId(unsigned id) { mId = id; }

protected:
    unsigned mId;
};

}  // namespace Morvane
