# The desk in one folder, where nothing of the system's is: the launcher's scripts, and in programs/ what
# runs on a device. Names that a person types are links into it. Component: desk.
set(SYSCMD_DESK_DIR lib/syscmd-desk CACHE STRING "Folder of the desk, below the prefix")
set(programs ${SYSCMD_DESK_DIR}/programs)

install(PROGRAMS devkit/device/device devkit/device/demo devkit/device/inside.sh
    devkit/device/between-operations.sh devkit/device/snapshot
    DESTINATION ${SYSCMD_DESK_DIR} COMPONENT desk)
install(DIRECTORY devkit/device/lib devkit/device/life
    DESTINATION ${SYSCMD_DESK_DIR} COMPONENT desk)
install(DIRECTORY devkit/device/files
    DESTINATION ${SYSCMD_DESK_DIR} USE_SOURCE_PERMISSIONS COMPONENT desk)
install(FILES devkit/device/seed.json DESTINATION ${SYSCMD_DESK_DIR} COMPONENT desk)

# The plug-in finds the client library by the path of the program that loads it.
set_target_properties(broker plugin-trial bwdrecord PROPERTIES INSTALL_RPATH $ORIGIN)
install(TARGETS broker boxwelld device-agent device-exec device-keeper plugin-trial RUNTIME DESTINATION ${programs} COMPONENT desk)
install(TARGETS bwdplayer bwdrecord proot-sockets LIBRARY DESTINATION ${programs} COMPONENT desk)
if(TARGET broker-failing)
    set_target_properties(broker-failing PROPERTIES INSTALL_RPATH $ORIGIN)
    install(TARGETS broker-failing RUNTIME DESTINATION ${programs} COMPONENT desk)
endif()
if(NOT BWDCLIENT_LIBRARY)
    install(TARGETS bwdclient LIBRARY DESTINATION ${programs} COMPONENT desk)
endif()

# install_link(FOLDER NAME TARGET): a link that leads from there to TARGET, all below the prefix.
function(install_link folder name target)
    file(RELATIVE_PATH text /${folder} /${target})
    install(CODE "
        set(folder \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${folder}\")
        file(MAKE_DIRECTORY \"\${folder}\")
        file(CREATE_LINK ${text} \"\${folder}/${name}\" SYMBOLIC)" COMPONENT desk)
endfunction()
install_link(${CMAKE_INSTALL_BINDIR} broker ${programs}/broker)
install_link(${CMAKE_INSTALL_BINDIR} device ${SYSCMD_DESK_DIR}/device)
install_link(${CMAKE_INSTALL_BINDIR} device-demo ${SYSCMD_DESK_DIR}/demo)
install_link(${CMAKE_INSTALL_SBINDIR} boxwelld ${programs}/boxwelld)
install_link(${programs} libsyscmd.so ${SYSCMD_PLUGIN_DIR}/libsyscmd.so)
