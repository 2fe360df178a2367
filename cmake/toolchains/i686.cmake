# SPDX-License-Identifier: MIT
# 32-bit x86 with Debian's g++-i686-linux-gnu; programs run under qemu-user.
set(QPS_TRIPLET i686-linux-gnu)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(QPS_EMULATOR qemu-i386)
include(${CMAKE_CURRENT_LIST_DIR}/linux-gnu.cmake)
