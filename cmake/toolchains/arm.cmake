# What the cross builds for ARM have in common: Debian's cross compilers, and a sysroot that
# scripts/sysroot makes. Included by armhf.cmake and arm64.cmake, which set
#   MORVANE_ARCHITECTURE  Debian's name of the architecture
#   MORVANE_TRIPLET       GNU's name of it, as in the compilers' names
#   MORVANE_QEMU          the emulator that runs its programs

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSROOT ${CMAKE_CURRENT_LIST_DIR}/../../build-sysroot/${MORVANE_ARCHITECTURE})
cmake_path(NORMAL_PATH CMAKE_SYSROOT)
set(CMAKE_C_COMPILER ${MORVANE_TRIPLET}-gcc)
set(CMAKE_CXX_COMPILER ${MORVANE_TRIPLET}-g++)
set(CMAKE_LIBRARY_ARCHITECTURE ${MORVANE_TRIPLET})
set(CMAKE_CROSSCOMPILING_EMULATOR ${MORVANE_QEMU} -L ${CMAKE_SYSROOT})

# Generators of code run here, everything else is the device's.
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(PKG_CONFIG_EXECUTABLE ${CMAKE_CURRENT_LIST_DIR}/pkg-config CACHE FILEPATH "")
set(ENV{MORVANE_SYSROOT} ${CMAKE_SYSROOT})
set(ENV{MORVANE_TRIPLET} ${MORVANE_TRIPLET})
