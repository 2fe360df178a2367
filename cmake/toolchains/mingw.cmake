# SPDX-License-Identifier: MIT
# 64-bit Windows with Debian's g++-mingw-w64-x86-64-posix; programs run under wine64. The compiler's
# own libraries are linked in, so that a program needs nothing of this machine.
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)
set(CMAKE_C_COMPILER x86_64-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER x86_64-w64-mingw32-g++-posix)
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT -static)
endforeach()
find_program(QPS_WINE wine64 PATHS /usr/lib/wine)
set(CMAKE_CROSSCOMPILING_EMULATOR env WINEDEBUG=-all ${QPS_WINE})
set(CMAKE_FIND_ROOT_PATH /usr/x86_64-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
