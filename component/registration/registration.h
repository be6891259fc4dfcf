// The component's entries in the registry.
#pragma once

#include "component/com/ole_headers.h"

namespace rdv {

// For all users of the machine, or, where the caller may not write there, for the caller alone.
// The environment variable RDV_REGISTRATION = "machine" or "user" asks for one of them. On failure
// nothing is left behind.
HRESULT RegisterComponent();

// Takes away what RegisterComponent wrote for this word size, for the machine and for the caller
// alike, unless the environment variable names one of them. What the other word size needs stays.
HRESULT UnregisterComponent();

}  // namespace rdv
