# The target `bwdclient`: the management daemon's client library, which the device provides.
if(BWDCLIENT_LIBRARY)
    add_library(bwdclient SHARED IMPORTED GLOBAL)
    set_target_properties(bwdclient PROPERTIES IMPORTED_LOCATION ${BWDCLIENT_LIBRARY})
elseif(SYSCMD_DEVKIT)
    # Defined in devkit/bwdclient.
else()
    # What the linker has to know of it: the one call. The device's own takes its place there.
    file(WRITE ${CMAKE_BINARY_DIR}/stand-in/bwdclient.c
        "int process_request_bwdclient(void);\nint process_request_bwdclient(void) { return -1; }\n")
    add_library(bwdclient SHARED ${CMAKE_BINARY_DIR}/stand-in/bwdclient.c)
    set_target_properties(bwdclient PROPERTIES
        C_VISIBILITY_PRESET default LIBRARY_OUTPUT_DIRECTORY ${CMAKE_BINARY_DIR}/stand-in)
endif()
