# SPDX-License-Identifier: MIT
# Big-endian 64-bit with Debian's g++-s390x-linux-gnu; programs run under qemu-user.
set(QPS_TRIPLET s390x-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR s390x)
set(QPS_EMULATOR qemu-s390x)
include(${CMAKE_CURRENT_LIST_DIR}/linux-gnu.cmake)
