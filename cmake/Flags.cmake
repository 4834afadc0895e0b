# What every target is compiled and linked with.
set(CMAKE_CXX_STANDARD 20)
set(CMAKE_CXX_STANDARD_REQUIRED ON)
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_C_STANDARD 11)
set(CMAKE_C_STANDARD_REQUIRED ON)
set(CMAKE_C_EXTENSIONS OFF)
set(CMAKE_CXX_VISIBILITY_PRESET hidden)
set(CMAKE_C_VISIBILITY_PRESET hidden)
set(CMAKE_VISIBILITY_INLINES_HIDDEN ON)
set(CMAKE_POSITION_INDEPENDENT_CODE ON)
# Where programs find the client library, also for the plug-in that they load, which has no path of its
# own. A DT_RUNPATH would serve only what a program itself is linked against.
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)
set(CMAKE_BUILD_RPATH $<TARGET_FILE_DIR:bwdclient>)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(THREADS_PREFER_PTHREAD_FLAG ON)

# asprintf, GNU strerror_r, thread-safe look-ups; 64-bit file offsets and, where the C library has it,
# 64-bit time on 32-bit devices: a file that is dated beyond 2038 can be looked at.
add_compile_definitions(_GNU_SOURCE _FILE_OFFSET_BITS=64 _TIME_BITS=64)
add_compile_options(
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wformat=2 -Wmissing-declarations
    -fstack-protector-strong)
# No build path in what ships: asserts and debug information name files from the project's root, so that
# the same sources are the same bytes in any folder. Where coverage is counted the tools need whole paths.
if(NOT CMAKE_CXX_FLAGS MATCHES "--coverage")
    set(path_maps -ffile-prefix-map=${CMAKE_SOURCE_DIR}/= -ffile-prefix-map=${CMAKE_BINARY_DIR}=build)
    if(CMAKE_SYSROOT)
        list(APPEND path_maps -ffile-prefix-map=${CMAKE_SYSROOT}=sysroot)
    endif()
    add_compile_options(${path_maps})
    add_link_options(${path_maps}) # what is optimised when it is linked
endif()
# Constants beside the code, as the linker for ARM has them by default: loading maps two segments, not four.
add_link_options(-Wl,--disable-new-dtags -Wl,-z,relro -Wl,-z,now -Wl,-z,noseparate-code)
if(SYSCMD_WERROR)
    add_compile_options(-Werror)
endif()
# For size; with debug symbols, which strip_apart() keeps.
set(CMAKE_C_FLAGS_MINSIZEREL "-Os -g -DNDEBUG")
set(CMAKE_CXX_FLAGS_MINSIZEREL "-Os -g -DNDEBUG")
if(CMAKE_BUILD_TYPE MATCHES "^(Release|MinSizeRel|RelWithDebInfo)$")
    add_compile_definitions(_FORTIFY_SOURCE=2)
endif()

if(CMAKE_BUILD_TYPE STREQUAL MinSizeRel)
    add_compile_options(-ffunction-sections -fdata-sections)
    add_link_options(-Wl,--gc-sections)
endif()

# ship_small(TARGET...): object libraries of the plug-in, in a build for size. docs/device-build.md
# tells what each option saves.
function(ship_small)
    if(CMAKE_BUILD_TYPE STREQUAL MinSizeRel)
        foreach(target ${ARGV})
            target_compile_options(${target} PRIVATE
                -flto -ffat-lto-objects -fno-ipa-sra -fno-gcse
                "$<$<COMPILE_LANGUAGE:CXX>:SHELL:-include ${CMAKE_SOURCE_DIR}/common/shared_string.h>")
        endforeach()
    endif()
endfunction()

include_directories(${CMAKE_SOURCE_DIR})
