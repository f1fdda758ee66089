# webapi_add_handler_test(<name> <source>...
#   HANDLERS <target>...
#   DESCRIPTIONS <file>...
#   [LIBRARIES <library>...])
#
# Builds the test program <name>, linked with ORBO::webapi_testing and <library>..., and
# adds it as a test.  The macro WEBAPI_HANDLER_FILES in it names the handler libraries and
# the descriptions, for the constructor of ORBO::HandlerTest.  Available inside the tree
# and after find_package(webapi-KEP5 COMPONENTS testing).
function(webapi_add_handler_test name)
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "" "HANDLERS;DESCRIPTIONS;LIBRARIES")
  set(files)
  foreach(handler IN LISTS arg_HANDLERS)
    list(APPEND files "$<TARGET_FILE:${handler}>")
  endforeach()
  foreach(description IN LISTS arg_DESCRIPTIONS)
    get_filename_component(path "${description}" ABSOLUTE)
    list(APPEND files "${path}")
  endforeach()
  list(JOIN files "|" files)

  add_executable(${name} ${arg_UNPARSED_ARGUMENTS})
  target_compile_definitions(${name} PRIVATE "WEBAPI_HANDLER_FILES=\"${files}\"")
  target_link_libraries(${name} PRIVATE ORBO::webapi_testing ${arg_LIBRARIES})
  add_dependencies(${name} ${arg_HANDLERS})
  add_test(NAME "${WEBAPI_TEST_PREFIX}${name}" COMMAND ${name})
  set_tests_properties("${WEBAPI_TEST_PREFIX}${name}" PROPERTIES TIMEOUT 120)
endfunction()
