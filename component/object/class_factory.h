// The factory that hosts create controls with.
#pragma once

#include "component/com/ole_headers.h"

namespace rdv {

HRESULT GetClassFactory(REFIID iid, void** object);

}  // namespace rdv
