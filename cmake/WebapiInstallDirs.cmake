# Where the web-API directory (descriptions, handlers, the CGI program) goes.
#
# The library looks for it in /usr/orbo/orboman/webapi, below $WEBAPI_ROOT when
# that is set.  With WEBAPI_API_DIR empty the place follows the prefix in use at
# install time: for /, /usr and /usr/local it is /usr/orbo/orboman/webapi, for
# any other prefix it is <prefix>/usr/orbo/orboman/webapi, which is found with
# WEBAPI_ROOT=<prefix>.  DESTDIR is put before it as before everything else.
set(WEBAPI_API_DIR "" CACHE STRING
  "Directory of descriptions and handlers; empty: usr/orbo/orboman/webapi by the prefix")

if(WEBAPI_API_DIR)
  set(WEBAPI_API_DESTINATION "${WEBAPI_API_DIR}")
else()
  # The variable is left for the install script, which alone knows the final prefix.
  set(WEBAPI_API_DESTINATION "\${WEBAPI_API_DESTINATION}")
  install(CODE [[
    if(CMAKE_INSTALL_PREFIX STREQUAL "/usr")
      set(WEBAPI_API_DESTINATION "orbo/orboman/webapi")
    elseif(CMAKE_INSTALL_PREFIX STREQUAL "/usr/local")
      set(WEBAPI_API_DESTINATION "../orbo/orboman/webapi")
    else()
      set(WEBAPI_API_DESTINATION "usr/orbo/orboman/webapi")
    endif()
  ]] ALL_COMPONENTS)
endif()
