# Debian packages: cpack --config BUILD/CPackConfig.cmake.  One for programs that run,
# one to build against the library, one with the command, the handlers and the
# descriptions.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_PACKAGE_NAME webapi-kep5)
set(CPACK_PACKAGE_CONTACT "The webapi-KEP5 maintainers <root@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "${PROJECT_DESCRIPTION}")
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL library development tools)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
# The programs' own library is in none of the installed packages.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${PROJECT_BINARY_DIR}/src")
set(webapi_same_version "libwebapi-kep5 (= ${PROJECT_VERSION})")

set(CPACK_DEBIAN_LIBRARY_PACKAGE_NAME libwebapi-kep5)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_RECOMMENDS "media-types, ca-certificates")
set(CPACK_COMPONENT_LIBRARY_DESCRIPTION
  "The library that CGI programs and handlers link with, and its modules.")
# A trigger for the loader's cache.
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS ON)
set(CPACK_DEBIAN_LIBRARY_PACKAGE_GENERATE_SHLIBS_POLICY "=")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libwebapi-kep5-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SHLIBDEPS OFF)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS "${webapi_same_version}, libjsoncpp-dev")
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Headers, the CMake package and the pkg-config file.")

set(CPACK_DEBIAN_TOOLS_PACKAGE_NAME webapi-kep5-tools)
set(CPACK_DEBIAN_TOOLS_PACKAGE_SECTION admin)
set(CPACK_DEBIAN_TOOLS_PACKAGE_DEPENDS "${webapi_same_version}")
set(CPACK_DEBIAN_TOOLS_PACKAGE_RECOMMENDS "systemd | systemd-standalone-tmpfiles")
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/packaging/debian/postinst")
set(CPACK_DEBIAN_TOOLS_PACKAGE_CONTROL_STRICT_PERMISSION ON)
set(CPACK_COMPONENT_TOOLS_DESCRIPTION
  "The command webapi, the handlers and descriptions, the client, the manual pages.")

include(CPack)
