// IVWOperator: the object an interactive tool operates on (the effect), as far
// as a tool reads and writes its properties. The host's property container is
// expected to implement it; the tool never owns it.
#pragma once

#include "hostsdk/guid.h"
#include "hostsdk/hresult.h"
#include "hostsdk/variant.h"

class IVWOperator {
public:
    virtual ~IVWOperator() = default;
    // The property's value at `time` (-1.0: the current time) into `value`, in
    // the type that `value->vt` asks for.
    virtual HRESULT GetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, double time) = 0;
    // Writes the property at `time` (-1.0: now) with the given undo style.
    virtual HRESULT SetAnimatedProperty(const GUID& guid, VARIANT* value, void* params, int undoStyle,
                                        double time) = 0;
};
