# What every target of the project is compiled with. Link morvane_options to get it.

# As with the libraries, Debian 12's versions.
set(oldest_GNU 12)
set(oldest_Clang 14)
set(oldest ${oldest_${CMAKE_CXX_COMPILER_ID}})
if(CMAKE_CXX_COMPILER_VERSION VERSION_LESS "${oldest}")
    message(FATAL_ERROR "${CMAKE_CXX_COMPILER_ID} ${CMAKE_CXX_COMPILER_VERSION} is too old: "
        "${oldest} or later is needed for C++20")
endif()

add_library(morvane_options INTERFACE)
target_compile_features(morvane_options INTERFACE cxx_std_20)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)

option(MORVANE_WERROR "Make warnings errors, as every change must be free of them" OFF)
if(MORVANE_WERROR)
    set(CMAKE_COMPILE_WARNING_AS_ERROR ON)
endif()
target_compile_options(morvane_options INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wsign-conversion -Wcast-qual
    -Wcast-align -Wformat=2 -Wundef -Wunused -Wdouble-promotion
    -Wimplicit-fallthrough -fstack-protector-strong)
target_compile_options(morvane_options INTERFACE
    $<$<COMPILE_LANGUAGE:CXX>:-Wold-style-cast;-Wnon-virtual-dtor;-Woverloaded-virtual>
    $<$<CXX_COMPILER_ID:GNU>:-Wduplicated-cond;-Wduplicated-branches;-Wlogical-op>)
# The last two let a 32-bit device look at files of after 2038, with more than 2 GiB, or with an inode
# number of 64 bits.
target_compile_definitions(morvane_options INTERFACE
    _GNU_SOURCE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
target_link_options(morvane_options INTERFACE
    -Wl,-z,relro -Wl,-z,now -Wl,-z,noexecstack -Wl,--as-needed)

# With CMAKE_INTERPROCEDURAL_OPTIMIZATION the shipped programs are optimised as a whole. The tests
# link the same libraries as they are, so that no source is compiled twice.
if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    target_compile_options(morvane_options INTERFACE
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,STATIC_LIBRARY>:-ffat-lto-objects>)
    # Without the compiler's plugin an index of an archive names what is in the machine code only.
    # Otherwise the linker takes members anew, in search of functions that were inlined.
    set(CMAKE_CXX_ARCHIVE_CREATE_IPO
        "<CMAKE_AR> --plugin /dev/null qcs <TARGET> <LINK_FLAGS> <OBJECTS>")
    set(CMAKE_CXX_ARCHIVE_FINISH_IPO "")
endif()

option(MORVANE_STATIC_LIBSTDCXX "Link the libraries of the compiler into the programs" OFF)
if(MORVANE_STATIC_LIBSTDCXX)
    target_link_options(morvane_options INTERFACE -static-libstdc++ -static-libgcc)
endif()

option(MORVANE_FUZZ "Build the fuzz targets; needs clang and MORVANE_SANITIZE" OFF)
if(MORVANE_FUZZ)
    target_compile_options(morvane_options INTERFACE -fsanitize=fuzzer-no-link)
endif()

option(MORVANE_SANITIZE "Build with AddressSanitizer and UndefinedBehaviorSanitizer" OFF)
if(MORVANE_SANITIZE)
    set(sanitizers -fsanitize=address,undefined -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_compile_options(morvane_options INTERFACE ${sanitizers})
    target_compile_definitions(morvane_options INTERFACE MORVANE_SANITIZE _GLIBCXX_ASSERTIONS)
    # What the sanitizers add has a million pointers. Programs at fixed addresses need not adjust them
    # at each start, which took a third of the time of a short one.
    target_link_options(morvane_options INTERFACE ${sanitizers}
        $<$<STREQUAL:$<TARGET_PROPERTY:TYPE>,EXECUTABLE>:-no-pie>)
else()
    include(CheckPIESupported)
    check_pie_supported(OUTPUT_VARIABLE pie_output LANGUAGES C CXX)
    target_compile_options(morvane_options INTERFACE -U_FORTIFY_SOURCE -D_FORTIFY_SOURCE=2)
endif()
