# Cross build for 64-bit Windows with Debian's mingw-w64 (POSIX threads, so
# that std::thread and std::mutex are there). The programs it makes run on
# this machine under Wine (wine64), which CMake uses to run tests and to list
# GoogleTest's cases.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
find_program(VBU_WINE NAMES wine64 wine PATHS /usr/lib/wine)
if(VBU_WINE)
  set(CMAKE_CROSSCOMPILING_EMULATOR ${VBU_WINE})
endif()
