// Field values as automation delivers them. Windows only.
#pragma once

#include <windows.h>
// The automation headers need the declarations before them.
#include <oleauto.h>

#include "runtime/value.h"

namespace rdv::ado {

// Raises 13 (Type mismatch) for a type that no field has.
Value ToValue(const VARIANT& variant);

}  // namespace rdv::ado
