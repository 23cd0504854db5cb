#pragma once

namespace Morvane {

class MVNProperties;

// Told of every unblocked change of a property bag it was added to. Called on
// the thread that set the value, after the bag's own _OnPropertyChanged and
// outside the bag's lock, so it may read or set properties.
class MVNListenerProperty {
public:
    virtual ~MVNListenerProperty() = default;
    virtual void onPropertyChanged(MVNProperties* properties, const char* key) = 0;
};

}  // namespace Morvane
