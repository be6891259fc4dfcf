# Cross-building the component for 64-bit Windows from Linux.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(RDV_TRIPLET x86_64-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake")
