# webapi_add_handler(<name> <source>...)
#
# Builds the handler library lib<name>.so, linked with ORBO::webapi.  Only the
# table functions that a handler marks for export leave it, and files of more than
# 2 GiB can be opened on 32-bit systems too.  Available inside the tree and after
# find_package(webapi-KEP5).
function(webapi_add_handler name)
  add_library(${name} MODULE ${ARGN})
  set_target_properties(${name} PROPERTIES
    CXX_VISIBILITY_PRESET hidden
    VISIBILITY_INLINES_HIDDEN ON)
  target_compile_definitions(${name} PRIVATE _FILE_OFFSET_BITS=64)
  target_link_libraries(${name} PRIVATE ORBO::webapi)
endfunction()
