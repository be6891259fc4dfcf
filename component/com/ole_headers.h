// The platform's object and control headers.
#pragma once

// clang-format off
#include <windows.h>
#include <ole2.h>
#include <olectl.h>
#include <ocidl.h>
#include <objsafe.h>
// clang-format on

// The platform's interfaces are released, never deleted: none of them has a virtual destructor.
#pragma GCC diagnostic ignored "-Wnon-virtual-dtor"
