# What is installed, in two components: the module with its stubs and the operator layer, and the embedded host with its
# command. The stand-ins of the platform libraries lie in a folder of their own, where the loader finds them only when
# qdp-host says so.

set(QDP_PYTHON_FOLDER lib/python3/dist-packages CACHE STRING "The folder of Python's path to install to, in the prefix")
set(QDP_SHARE_FOLDER share)
if(SKBUILD)
    set(QDP_SHARE_FOLDER ${SKBUILD_DATA_DIR}/share)
endif()

install(TARGETS _libqdp DESTINATION ${QDP_PYTHON_FOLDER} COMPONENT module)
install(DIRECTORY typings/_libqdp-stubs DESTINATION ${QDP_PYTHON_FOLDER} COMPONENT module)
install(TARGETS qdp_call DESTINATION ${QDP_PYTHON_FOLDER}/qdp COMPONENT module)
install(FILES ${PROJECT_BINARY_DIR}/qdp/_version.py DESTINATION ${QDP_PYTHON_FOLDER}/qdp COMPONENT module)
install(DIRECTORY qdp DESTINATION ${QDP_PYTHON_FOLDER} COMPONENT module
    PATTERN __pycache__ EXCLUDE PATTERN *.cpp EXCLUDE PATTERN *.in EXCLUDE)

set(stand_ins qdphost qdp qmtPublic qdpcapture)
set_target_properties(${stand_ins} PROPERTIES INSTALL_RPATH "$ORIGIN")
install(TARGETS ${stand_ins} DESTINATION ${QDP_PYTHON_FOLDER}/qdp_host/stand_ins COMPONENT host)
install(DIRECTORY host/python/qdp_host DESTINATION ${QDP_PYTHON_FOLDER} COMPONENT host PATTERN __pycache__ EXCLUDE)
install(DIRECTORY host/scenarios DESTINATION ${QDP_PYTHON_FOLDER}/qdp_host COMPONENT host
    FILES_MATCHING PATTERN *.json)
install(FILES host/control.h DESTINATION ${QDP_PYTHON_FOLDER}/qdp_host/include COMPONENT host)
install(DIRECTORY examples DESTINATION ${QDP_SHARE_FOLDER}/doc/qdp-host COMPONENT host
    PATTERN __pycache__ EXCLUDE PATTERN .pytest_cache EXCLUDE)
install(FILES CHANGELOG.md DESTINATION ${QDP_SHARE_FOLDER}/doc/python3-libqdp COMPONENT module)
file(GLOB ansible_modules ansible/*.py)  # Ansible finds modules in this folder of its own
install(FILES ${ansible_modules} DESTINATION ${QDP_SHARE_FOLDER}/ansible/plugins/modules COMPONENT module)

# The man pages and completions of the commands, made from their parsers where the tools for that are installed.
set(command_documents ${PROJECT_BINARY_DIR}/package/documents)
if(NOT QDP_SANITIZE AND NOT QDP_COVERAGE AND NOT QDP_CHECK_ONLY)
    file(GLOB_RECURSE command_sources CONFIGURE_DEPENDS qdp/*.py host/python/qdp_host/*.py)
    add_custom_command(OUTPUT ${command_documents}/made
        COMMAND ${CMAKE_COMMAND} -E env LD_LIBRARY_PATH=${PROJECT_BINARY_DIR}/host PYTHONDONTWRITEBYTECODE=1
            ${Python3_EXECUTABLE} ${PROJECT_SOURCE_DIR}/package/make_documents.py ${PROJECT_BINARY_DIR}
        DEPENDS package/make_documents.py package/command_files.py ${command_sources} _libqdp qdp_call qdp qmtPublic)
    add_custom_target(command_documents ALL DEPENDS ${command_documents}/made)
endif()
foreach(component module host)
    install(DIRECTORY ${command_documents}/${component}/ DESTINATION ${QDP_SHARE_FOLDER}
        COMPONENT ${component} OPTIONAL)
endforeach()
