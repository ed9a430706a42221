# Installs what another build folder has built, in place of building it again; script/package makes the wheel so.

foreach(target _libqdp qdp_call qdp qmtPublic qdpcapture)
    add_custom_target(${target})
endforeach()
install(CODE "
    set(stage \"${PROJECT_BINARY_DIR}/stage\")
    file(REMOVE_RECURSE \"\${stage}\")
    foreach(component module host)
        execute_process(COMMAND_ERROR_IS_FATAL ANY COMMAND \"${CMAKE_COMMAND}\"
            --install \"${QDP_PREBUILT}\" --component \${component} --prefix \"\${stage}\" --strip)
    endforeach()
    file(INSTALL \"\${stage}/lib/python3/dist-packages/\" DESTINATION \"\${CMAKE_INSTALL_PREFIX}\"
        USE_SOURCE_PERMISSIONS)
    file(INSTALL \"\${stage}/share\" DESTINATION \"${SKBUILD_DATA_DIR}\" USE_SOURCE_PERMISSIONS)
" COMPONENT module)
