# Toolchain of a 32-bit ARM device with hardware floating point.
#   SYSROOT       the device's libraries and headers; default: what tools/armhf-sysroot.sh makes
#   CROSS_PREFIX  what stands before the tools' names, with a path where PATH does not lead to them
set(SYSROOT "${CMAKE_CURRENT_LIST_DIR}/../build/armhf-sysroot" CACHE PATH "Sysroot of the device")
set(CROSS_PREFIX "arm-linux-gnueabihf-" CACHE STRING "Prefix of the cross compiler's tools")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES SYSROOT CROSS_PREFIX)
get_filename_component(CMAKE_SYSROOT "${SYSROOT}" ABSOLUTE)
if(NOT EXISTS "${CMAKE_SYSROOT}/usr/include")
    message(FATAL_ERROR "No sysroot in ${CMAKE_SYSROOT}: run tools/armhf-sysroot.sh or set SYSROOT")
endif()

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR armv7l)
set(CMAKE_LIBRARY_ARCHITECTURE arm-linux-gnueabihf)
set(CMAKE_C_COMPILER ${CROSS_PREFIX}gcc)
set(CMAKE_CXX_COMPILER ${CROSS_PREFIX}g++)

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR}
    "${CMAKE_SYSROOT}/usr/lib/${CMAKE_LIBRARY_ARCHITECTURE}/pkgconfig:${CMAKE_SYSROOT}/usr/lib/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")

# By name: a test on the private device starts it there.
set(CMAKE_CROSSCOMPILING_EMULATOR qemu-arm -L "${CMAKE_SYSROOT}")
