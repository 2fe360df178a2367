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

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
