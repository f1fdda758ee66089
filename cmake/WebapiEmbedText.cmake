# webapi_embed_texts(<target> <header> [<constant> <file>]...)
#
# Gives the sources of <target> a header with the texts of files as constants.
function(webapi_embed_texts target header)
  set(text "#pragma once\n\nnamespace ORBO {\n")
  while(ARGN)
    list(POP_FRONT ARGN constant file)
    get_filename_component(file "${file}" ABSOLUTE)
    file(READ "${file}" content)
    string(APPEND text "\ninline constexpr char ${constant}[] = R\"text(${content})text\";\n")
    set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${file}")
  endwhile()
  file(CONFIGURE OUTPUT "${CMAKE_CURRENT_BINARY_DIR}/embedded/${header}"
    CONTENT "${text}\n}  // namespace ORBO\n" @ONLY)
  target_include_directories(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/embedded")
endfunction()
