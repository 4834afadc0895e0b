# What others build on: the plug-in where the broker looks for it, headers, archives for plug-ins that
# compile these in, and how pkg-config and CMake find them. Components: plugin, dev.
include(GNUInstallDirs)
include(CMakePackageConfigHelpers)
set(SYSCMD_PLUGIN_DIR ${CMAKE_INSTALL_LIBDIR}/syscmd CACHE STRING "Folder of the plug-in, below the prefix")
set(SYSCMD_HEADER_DIR ${CMAKE_INSTALL_INCLUDEDIR}/syscmd)
set(SYSCMD_STAND_IN_DIR ${CMAKE_INSTALL_LIBDIR}/syscmd/stand-in) # where no loader looks

install(TARGETS syscmd LIBRARY DESTINATION ${SYSCMD_PLUGIN_DIR} COMPONENT plugin)

add_library(liblst_archive STATIC $<TARGET_OBJECTS:liblst>)
set_target_properties(liblst_archive PROPERTIES OUTPUT_NAME lst LINKER_LANGUAGE CXX)
add_library(common_archive STATIC $<TARGET_OBJECTS:common>)
set_target_properties(common_archive PROPERTIES OUTPUT_NAME syscmd-common LINKER_LANGUAGE CXX)
# Without what only this very compiler could read when it links.
foreach(archive liblst_archive common_archive)
    add_custom_command(TARGET ${archive} POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --remove-section=.gnu.lto_* --remove-section=.gnu.debuglto_*
            $<TARGET_FILE:${archive}>
        VERBATIM)
endforeach()
install(TARGETS liblst_archive common_archive ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)
install(TARGETS bwdclient_stand_in LIBRARY DESTINATION ${SYSCMD_STAND_IN_DIR} COMPONENT dev)

# The headers for other plug-ins and what these include.
foreach(header
    common/account_name.h
    common/base64.h
    common/common.h
    common/device/device_info.h
    common/device/owner_file.h
    common/device/upgrade_flag.h
    common/error_text.h
    common/hash.h
    common/io.h
    common/isowner.h
    common/log.h
    common/mxl/bwdclient.h
    common/mxl/reply.h
    common/mxl/transport.h
    common/mxl_templates.h
    common/random_name.h
    common/readline.h
    common/result.h
    common/transaction.h
    common/whole_file.h
    liblst/export.h
    liblst/liblst.h
    syscmd/handler.h)
    get_filename_component(folder ${header} DIRECTORY)
    install(FILES ${header} DESTINATION ${SYSCMD_HEADER_DIR}/${folder} COMPONENT dev)
endforeach()

# The tree may be moved, so paths begin where the file is; libraries are named.
file(RELATIVE_PATH SYSCMD_PREFIX_OF_PKGCONFIG /${CMAKE_INSTALL_LIBDIR}/pkgconfig /)
foreach(name liblst syscmd-common syscmd)
    configure_file(packaging/${name}.pc.in ${CMAKE_BINARY_DIR}/packaging/${name}.pc @ONLY)
    install(FILES ${CMAKE_BINARY_DIR}/packaging/${name}.pc
        DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig COMPONENT dev)
endforeach()
set(package_dir ${CMAKE_INSTALL_LIBDIR}/cmake/syscmd)
configure_package_config_file(packaging/syscmdConfig.cmake.in ${CMAKE_BINARY_DIR}/packaging/syscmdConfig.cmake
    INSTALL_DESTINATION ${package_dir}
    PATH_VARS CMAKE_INSTALL_LIBDIR SYSCMD_HEADER_DIR SYSCMD_PLUGIN_DIR SYSCMD_STAND_IN_DIR)
write_basic_package_version_file(${CMAKE_BINARY_DIR}/packaging/syscmdConfigVersion.cmake
    COMPATIBILITY SameMajorVersion)
install(FILES
    ${CMAKE_BINARY_DIR}/packaging/syscmdConfig.cmake ${CMAKE_BINARY_DIR}/packaging/syscmdConfigVersion.cmake
    DESTINATION ${package_dir} COMPONENT dev)
