# The Debian packages, a package a component: python3-libqdp and qdp-host. script/package builds them.

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_CONTACT "${PROJECT_NAME} developers <developers@libqdp.invalid>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL module host module_debian host_debian)
set(CPACK_COMPONENTS_GROUPING ONE_PER_GROUP)
set(CPACK_COMPONENT_MODULE_GROUP python3-libqdp)
set(CPACK_COMPONENT_MODULE_DEBIAN_GROUP python3-libqdp)
set(CPACK_COMPONENT_HOST_GROUP qdp-host)
set(CPACK_COMPONENT_HOST_DEBIAN_GROUP qdp-host)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION python)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)

set(CPACK_DEBIAN_PYTHON3-LIBQDP_PACKAGE_NAME python3-libqdp)
set(CPACK_DEBIAN_PYTHON3-LIBQDP_PACKAGE_DEPENDS "python3 (>= 3.6)")
set(CPACK_DEBIAN_PYTHON3-LIBQDP_DESCRIPTION "Python module for the host's accelerated packet datapath
Scripts on a hypervisor host import _libqdp to inspect and steer the
datapath's virtual switches, ports, uplinks, lcores, flow caches, MAC tables
and thread load balancer, and the SmartNIC pipeline behind it.

The package qdp and its command qdp stand on it: typed records, failures as
exceptions, tables and an exporter for Prometheus.

The platform's libraries libqdp.so and libqmtPublic.so come with the host.")
set(CPACK_DEBIAN_PYTHON3-LIBQDP_PACKAGE_SUGGESTS "python3-prometheus-client, qdp-host")
set(CPACK_DEBIAN_PYTHON3-LIBQDP_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/package/debian/postinst ${PROJECT_SOURCE_DIR}/package/debian/prerm)

set(CPACK_DEBIAN_QDP-HOST_PACKAGE_NAME qdp-host)
set(CPACK_DEBIAN_QDP-HOST_PACKAGE_DEPENDS "python3 (>= 3.6), python3-libqdp (= ${PROJECT_VERSION})")
set(CPACK_DEBIAN_QDP-HOST_DESCRIPTION "embedded host to write and test scripts of _libqdp on
Stand-ins for the platform's two libraries, with the state of one host:
switches, ports, traffic and settings. The command qdp-host runs a script on
it, on any machine.")
set(CPACK_DEBIAN_QDP-HOST_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/package/debian/postinst ${PROJECT_SOURCE_DIR}/package/debian/prerm)

# What only Debian's packages have: the commands, the metadata (each package its own), the unit of the exporter, the
# documents.
set(documents ${PROJECT_BINARY_DIR}/package)
string(TIMESTAMP QDP_CHANGELOG_DATE "%a, %d %b %Y %H:%M:%S +0000" UTC)
configure_file(package/debian/changelog.in ${documents}/changelog @ONLY)
file(ARCHIVE_CREATE OUTPUT ${documents}/changelog.gz PATHS ${documents}/changelog FORMAT raw
    COMPRESSION GZip COMPRESSION_LEVEL 9)
foreach(component module host)
    string(TOUPPER ${component} name)
    install(FILES package/debian/copyright ${documents}/changelog.gz
        DESTINATION share/doc/${CPACK_COMPONENT_${name}_GROUP} COMPONENT ${component}_debian EXCLUDE_FROM_ALL)
endforeach()
install(FILES package/systemd/qdp-exporter.service
    DESTINATION lib/systemd/system COMPONENT module_debian EXCLUDE_FROM_ALL)
install(FILES package/debian/lintian-overrides RENAME qdp-host
    DESTINATION share/lintian/overrides COMPONENT host_debian EXCLUDE_FROM_ALL)
install(PROGRAMS package/debian/qdp-host DESTINATION bin COMPONENT host_debian EXCLUDE_FROM_ALL)
install(PROGRAMS package/debian/qdp DESTINATION bin COMPONENT module_debian EXCLUDE_FROM_ALL)
set(module_metadata libqdp)
set(host_metadata qdp_host)
foreach(component module host)
    configure_file(package/debian/${component}/METADATA.in ${documents}/${component}/METADATA @ONLY)
    install(FILES ${documents}/${component}/METADATA package/debian/${component}/entry_points.txt
        DESTINATION lib/python3/dist-packages/${${component}_metadata}-${PROJECT_VERSION}.dist-info
        COMPONENT ${component}_debian EXCLUDE_FROM_ALL)
endforeach()

include(CPack)
