# SPDX-License-Identifier: MIT
# WebAssembly with the C library of WASI. Its C++ library knows no exceptions: what is thrown ends
# the module's instance (viewer/module/thrown.cpp).
set(CMAKE_SYSTEM_NAME Generic)
set(CMAKE_SYSTEM_PROCESSOR wasm32)
set(QPS_WASM TRUE)

foreach(language C CXX)
  set(CMAKE_${language}_COMPILER_TARGET wasm32-wasi)
  set(CMAKE_${language}_FLAGS_INIT
    "-mbulk-memory -mnontrapping-fptoint -msign-ext -mmutable-globals")
endforeach()
set(CMAKE_C_COMPILER clang-19)
set(CMAKE_CXX_COMPILER clang++-19)
string(APPEND CMAKE_CXX_FLAGS_INIT " -fexceptions -fignore-exceptions -fno-threadsafe-statics")
# With the stack first, one that overflows traps instead of overwriting data.
add_link_options(LINKER:--stack-first LINKER:-z,stack-size=1048576)

# The linker wants an index that only an archiver of its own writes. So what CMake calls an archive is
# one object file; what a program does not use of it is left out all the same.
set(CMAKE_CXX_ARCHIVE_CREATE "wasm-ld-19 --relocatable -o <TARGET> <OBJECTS>")
set(CMAKE_CXX_ARCHIVE_FINISH "")

set(CMAKE_CROSSCOMPILING_EMULATOR node --no-warnings ${CMAKE_CURRENT_LIST_DIR}/wasm_run.mjs)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
