# Windows x64 from Linux: MinGW-w64 GCC with posix threads, programs run under Wine. scripts/setup-windows prepares
# the compilers and the libraries; ORV_WINDOWS_PREFIX says where the libraries lie, as it does for the script.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

if(DEFINED ENV{ORV_WINDOWS_PREFIX})
  set(ORV_WINDOWS_PREFIX "$ENV{ORV_WINDOWS_PREFIX}")
elseif(DEFINED ENV{XDG_CACHE_HOME})
  set(ORV_WINDOWS_PREFIX "$ENV{XDG_CACHE_HOME}/orvcapsule/windows-x64")
else()
  set(ORV_WINDOWS_PREFIX "$ENV{HOME}/.cache/orvcapsule/windows-x64")
endif()

# Libraries, headers and packages come from these two trees only; programs from the machine only.
set(CMAKE_FIND_ROOT_PATH "${ORV_WINDOWS_PREFIX}" /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(CMAKE_CROSSCOMPILING_EMULATOR "${CMAKE_CURRENT_LIST_DIR}/../../scripts/wine-run")
set(ORV_STATIC_DEPENDENCIES ON) # the prefix holds static libraries; see cmake/StaticDependencies.cmake
