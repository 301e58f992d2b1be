# 32-bit ARM with hardware floating point.
set(CMAKE_SYSTEM_PROCESSOR arm)
set(MORVANE_ARCHITECTURE armhf)
set(MORVANE_TRIPLET arm-linux-gnueabihf)
set(MORVANE_QEMU qemu-arm-static)
include(${CMAKE_CURRENT_LIST_DIR}/arm.cmake)

# Notes about how older compilers passed parameters, which nothing here was built with.
set(CMAKE_CXX_FLAGS_INIT -Wno-psabi)
