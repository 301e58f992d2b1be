# 64-bit ARM.
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(MORVANE_ARCHITECTURE arm64)
set(MORVANE_TRIPLET aarch64-linux-gnu)
set(MORVANE_QEMU qemu-aarch64-static)
include(${CMAKE_CURRENT_LIST_DIR}/arm.cmake)
