# strip_apart(TARGET): leaves in the library what a device needs; its debug symbols go beside it, to
# be found by build-id or debug link.
function(strip_apart target)
    target_link_options(${target} PRIVATE -Wl,--build-id=sha1)
    if(SYSCMD_STRIP)
        add_custom_command(TARGET ${target} POST_BUILD
            COMMAND ${CMAKE_OBJCOPY} --only-keep-debug
                $<TARGET_FILE:${target}> $<TARGET_FILE:${target}>.debug
            COMMAND ${CMAKE_STRIP} --strip-all --remove-section=.comment $<TARGET_FILE:${target}>
            COMMAND ${CMAKE_OBJCOPY} --add-gnu-debuglink=$<TARGET_FILE_NAME:${target}>.debug
                $<TARGET_FILE_NAME:${target}>
            WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
            VERBATIM)
    endif()
endfunction()
