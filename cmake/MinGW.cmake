# Cross-building for 64-bit Windows with Debian's mingw-w64 (posix threads flavour:
# apt-get install g++-mingw-w64-x86-64-posix). Test programs run under wine
# (apt-get install wine wine64), which CTest calls as the emulator of every test.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(_mingw x86_64-w64-mingw32)
find_program(CMAKE_C_COMPILER ${_mingw}-gcc-posix)
find_program(CMAKE_CXX_COMPILER ${_mingw}-g++-posix)
find_program(CMAKE_RC_COMPILER ${_mingw}-windres)
if(NOT CMAKE_CXX_COMPILER)
  message(FATAL_ERROR
    "${_mingw}-g++-posix was not found. Install it with: apt-get install g++-mingw-w64-x86-64-posix")
endif()

set(CMAKE_FIND_ROOT_PATH /usr/${_mingw})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

find_program(TAVREL_WINE wine)
if(NOT TAVREL_WINE)
  message(FATAL_ERROR "wine was not found. Install it with: apt-get install wine wine64")
endif()
set(CMAKE_CROSSCOMPILING_EMULATOR ${TAVREL_WINE})
