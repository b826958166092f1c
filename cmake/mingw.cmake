# The cross compiler of the Windows build: mingw-w64 with its posix threads (std::thread). -DDELVANE_ARCH=i686 makes a
# program for 32 bits.
set(DELVANE_ARCH x86_64 CACHE STRING "x86_64 or i686")
set(CMAKE_TRY_COMPILE_PLATFORM_VARIABLES DELVANE_ARCH)
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${DELVANE_ARCH})
set(CMAKE_CXX_COMPILER ${DELVANE_ARCH}-w64-mingw32-g++-posix)
set(CMAKE_C_COMPILER ${DELVANE_ARCH}-w64-mingw32-gcc-posix)
set(CMAKE_RC_COMPILER ${DELVANE_ARCH}-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/${DELVANE_ARCH}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
# The programs of the build run under Wine, in a prefix of the build's own.
set(CMAKE_CROSSCOMPILING_EMULATOR ${CMAKE_CURRENT_LIST_DIR}/wine.sh)
