# The target `bwdclient`: the management daemon's client library, which the device provides.
if(BWDCLIENT_LIBRARY)
    add_library(bwdclient SHARED IMPORTED GLOBAL)
    set_target_properties(bwdclient PROPERTIES IMPORTED_LOCATION ${BWDCLIENT_LIBRARY})
elseif(SYSCMD_DEVKIT)
    # Defined in devkit/bwdclient.
else()
    message(FATAL_ERROR
        "Set BWDCLIENT_LIBRARY to the device's libbwdclient.so, or build with SYSCMD_DEVKIT=ON.")
endif()
