# What other projects need to build against an installed library.
install(DIRECTORY "${PROJECT_SOURCE_DIR}/include/webapi"
  DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
  FILES_MATCHING PATTERN "*.h")

install(TARGETS webapi
  EXPORT webapi-KEP5Targets
  LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT library
  INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})

set(webapi_package_dir "${CMAKE_INSTALL_LIBDIR}/cmake/webapi-KEP5")
install(EXPORT webapi-KEP5Targets NAMESPACE ORBO:: DESTINATION "${webapi_package_dir}")
export(EXPORT webapi-KEP5Targets NAMESPACE ORBO::)
# The component "testing", for the authors of handlers.
if(TARGET webapi_testing)
  install(TARGETS webapi_testing
    EXPORT webapi-KEP5TestingTargets
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR}
    INCLUDES DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
  install(EXPORT webapi-KEP5TestingTargets NAMESPACE ORBO:: DESTINATION "${webapi_package_dir}")
  export(EXPORT webapi-KEP5TestingTargets NAMESPACE ORBO::)
endif()
configure_package_config_file(
  "${PROJECT_SOURCE_DIR}/cmake/webapi-KEP5Config.cmake.in"
  "${PROJECT_BINARY_DIR}/webapi-KEP5Config.cmake"
  INSTALL_DESTINATION "${webapi_package_dir}"
  NO_SET_AND_CHECK_MACRO)
write_basic_package_version_file("${PROJECT_BINARY_DIR}/webapi-KEP5ConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)
# A build tree is a package, too, found by CMAKE_PREFIX_PATH.
foreach(module WebapiHandler WebapiHandlerTest)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${module}.cmake" "${PROJECT_BINARY_DIR}" COPYONLY)
endforeach()
install(FILES
  "${PROJECT_BINARY_DIR}/webapi-KEP5Config.cmake"
  "${PROJECT_BINARY_DIR}/webapi-KEP5ConfigVersion.cmake"
  "${PROJECT_BINARY_DIR}/WebapiHandler.cmake"
  "${PROJECT_BINARY_DIR}/WebapiHandlerTest.cmake"
  DESTINATION "${webapi_package_dir}")

# The prefix is found from the file's own place, so that the tree can be moved.
set(webapi_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH webapi_pkgconfig_prefix
  "/prefix/${webapi_pkgconfig_dir}" "/prefix")
set(webapi_pkgconfig_packages webapi-KEP5)
if(TARGET webapi_testing)
  list(APPEND webapi_pkgconfig_packages webapi-KEP5-testing)
endif()
foreach(package IN LISTS webapi_pkgconfig_packages)
  configure_file("${PROJECT_SOURCE_DIR}/cmake/${package}.pc.in"
    "${PROJECT_BINARY_DIR}/${package}.pc" @ONLY)
  install(FILES "${PROJECT_BINARY_DIR}/${package}.pc" DESTINATION "${webapi_pkgconfig_dir}")
endforeach()

# Descriptions belong to the web-API directory; anything else is reference data.
if(EXISTS "${PROJECT_SOURCE_DIR}/data")
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/data/" DESTINATION "${WEBAPI_API_DESTINATION}"
    COMPONENT tools
    FILES_MATCHING PATTERN "*.lib" PATTERN "lib.def")
  install(DIRECTORY "${PROJECT_SOURCE_DIR}/data/"
    DESTINATION "${CMAKE_INSTALL_DATADIR}/webapi-KEP5"
    COMPONENT tools
    PATTERN "*.lib" EXCLUDE
    PATTERN "lib.def" EXCLUDE
    PATTERN "CMakeLists.txt" EXCLUDE)
endif()

# The directories that a process without privileges cannot make after a start of the
# system.  The user's group has the user's name.
set(WEBAPI_SERVICE_USER "www-data" CACHE STRING "The user whom the CGI programs run as")
configure_file("${PROJECT_SOURCE_DIR}/packaging/tmpfiles.d/webapi.conf.in"
  "${PROJECT_BINARY_DIR}/tmpfiles.d/webapi.conf" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/tmpfiles.d/webapi.conf" DESTINATION lib/tmpfiles.d
  COMPONENT tools)
