// Whether an effect's Execute rendered its frame. Execute returns S_OK also
// when no picture was made (an engine out of memory, a kernel that could not
// be built, a stop); the effect's IDSRenderStatus says so, and hosts turn it
// into an error here.
#pragma once

#include <string>

#include "embed/errors.h"
#include "hostsdk/IDSImageEffect.h"

// Throws RenderFailure, its message "`what`: REASON", when `effect`'s last
// Execute (which returned `executed`) did not render its frame. An effect
// without IDSRenderStatus is taken at its return value.
void requireRendered(IDSImageEffect* effect, HRESULT executed, const std::string& what);
