// The viewer's context stack: tools that a host shows over its viewer, newest
// last. Process-wide (it lives in the host library), guarded by a lock.
//
// The stack only keeps the pointers it is given: the caller keeps the tool and
// the object alive until it removes the context. Linking the tool to its
// operator and viewer is the viewer's job, not the stack's.
#pragma once

#include <cstdint>
#include <vector>

#include "hostsdk/hresult.h"

class CDSInteractiveTool;

// One pushed context.
struct VWContext {
    uint32_t id;               // never 0
    int32_t kind;              // as pushed
    CDSInteractiveTool* tool;  // as pushed, not owned
    void* object;              // the object the tool works on, not owned
    void* paramsA;             // the two pointers and the number pushed with it,
    void* paramsB;             // kept as they came
    double value;
};

// Pushes a context of `kind` for `tool` over `object` and writes its id (never
// 0) to `context`. E_POINTER for a null `context` (then nothing is pushed) and
// E_INVALIDARG for a null `tool` (then `context` is set to 0).
HRESULT VWControllerPushContext(int32_t kind, CDSInteractiveTool* tool, void* object, void* paramsA, void* paramsB,
                                double value, uint32_t* context);
// Removes the context `context`; E_INVALIDARG if there is none of that id.
HRESULT VWControllerRemoveContext(uint32_t context);
// A copy of the stack, oldest first.
std::vector<VWContext> VWControllerListContexts();
