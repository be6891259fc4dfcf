# Cross-building the component for 32-bit Windows from Linux.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(RDV_TRIPLET i686-w64-mingw32)
include("${CMAKE_CURRENT_LIST_DIR}/mingw-w64-common.cmake")
