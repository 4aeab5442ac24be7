// PropertiesOperator: an object's properties (through IDSProperties) as a page
// or an interactive tool reads and writes them, at the host's current time,
// with autokey: a write sets a key (at `time`, or the current time for -1.0)
// when autokey is on or the property is animated already, and the stored value
// otherwise, or when the property cannot be animated.
#pragma once

#include <vector>

#include "hostsdk/IDSProperties.h"
#include "hostsdk/IVWOperator.h"

class PropertiesOperator : public IVWOperator {
public:
    // One write through SetAnimatedProperty, for a host to see what was done.
    struct Write {
        GUID guid;
        VARIANT value;
        int undoStyle;
        double time;
    };

    // Holds a reference to the object's IDSProperties; without one every call
    // gives E_NOINTERFACE.
    explicit PropertiesOperator(IUnknown* object);
    ~PropertiesOperator() override;
    PropertiesOperator(const PropertiesOperator&) = delete;
    PropertiesOperator& operator=(const PropertiesOperator&) = delete;

    // The value at `time` (-1.0: the current time), converted to `value->vt`
    // (VT_I4, VT_UI4, VT_UI8, VT_BOOL or VT_R8; VT_EMPTY takes the property's own).
    HRESULT GetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, double time) override;
    HRESULT SetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, int undoStyle, double time) override;
    // The stored value, whatever the animation.
    HRESULT GetPlainProperty(const GUID& guid, VARIANT* value);

    void SetCurrentTime(double seconds) { currentTime = seconds; }
    double CurrentTime() const { return currentTime; }
    void SetAutoKey(bool on) { autoKey = on; }
    const std::vector<Write>& Writes() const { return writes; }
    IDSProperties* Properties() const { return properties; }

private:
    IDSProperties* properties = nullptr;
    double currentTime = 0.0;
    bool autoKey = false;
    std::vector<Write> writes;
};
