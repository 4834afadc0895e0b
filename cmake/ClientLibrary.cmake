# The target `bwdclient`: the management daemon's client library, which the device provides.

# What a linker has to know of it: the one call. The device's own takes its place there.
file(CONFIGURE OUTPUT stand-in/bwdclient.c CONTENT
    "int process_request_bwdclient(void);\nint process_request_bwdclient(void) { return -1; }\n")
add_library(bwdclient_stand_in SHARED ${CMAKE_BINARY_DIR}/stand-in/bwdclient.c)
set_target_properties(bwdclient_stand_in PROPERTIES
    OUTPUT_NAME bwdclient C_VISIBILITY_PRESET default SKIP_BUILD_RPATH ON
    LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/stand-in)

if(BWDCLIENT_LIBRARY)
    add_library(bwdclient SHARED IMPORTED GLOBAL)
    set_target_properties(bwdclient PROPERTIES IMPORTED_LOCATION ${BWDCLIENT_LIBRARY})
elseif(NOT SYSCMD_DEVKIT) # else it is defined in devkit/bwdclient
    add_library(bwdclient ALIAS bwdclient_stand_in)
endif()
