# What the plug-in itself needs beside the C and C++ libraries: three, and no other.
find_package(PkgConfig REQUIRED)
pkg_check_modules(GLIB REQUIRED IMPORTED_TARGET glib-2.0)
pkg_check_modules(SYSTEMD REQUIRED IMPORTED_TARGET libsystemd)
find_library(CRYPT_LIBRARY crypt REQUIRED)
