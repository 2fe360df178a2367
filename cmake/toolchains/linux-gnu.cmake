# SPDX-License-Identifier: MIT
# What the cross builds for Linux share. Programs are linked as at home, with the shared reader, and
# find the other machine's C and C++ libraries through the emulator's library prefix.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_C_COMPILER ${QPS_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${QPS_TRIPLET}-g++)
set(CMAKE_CROSSCOMPILING_EMULATOR ${QPS_EMULATOR} -L /usr/${QPS_TRIPLET})
set(CMAKE_FIND_ROOT_PATH /usr/${QPS_TRIPLET})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
