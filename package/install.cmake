# What is installed, in two components: the module with its stubs, and the embedded host with its command. The
# stand-ins of the platform libraries lie in a folder of their own, where the loader finds them only when qdp-host
# says so.

set(QDP_PYTHON_FOLDER lib/python3/dist-packages CACHE STRING "The folder of Python's path to install to, in the prefix")

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
