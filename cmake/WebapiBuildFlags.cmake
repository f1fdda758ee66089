# webapi_build_flags: how the library's own code is compiled.
#
# A CGI process lives for one request, so the library is built for few
# relocations and few touched pages rather than for throughput.  Binding stays
# lazy, since a call uses few of the library's functions: -fno-plt and -z now cost
# 2 % more instructions a call, and link-time optimisation gains nothing.
add_library(webapi_build_flags INTERFACE)
# JSON_DLL_BUILD: jsoncpp's headers then give its classes the visibility that they
# have.  A template over a hidden class is hidden, and some of the library's public
# templates are over Json::Value.
target_compile_definitions(webapi_build_flags INTERFACE _FILE_OFFSET_BITS=64 JSON_DLL_BUILD)
target_compile_options(webapi_build_flags INTERFACE
  -fvisibility=hidden
  -fvisibility-inlines-hidden
  -ffunction-sections
  -fdata-sections
  -fno-semantic-interposition)

# Sanitizers reach every target, the tests and test modules included.
if(WEBAPI_SANITIZE)
  add_compile_options(-fsanitize=${WEBAPI_SANITIZE} -fno-sanitize-recover=all
    -fno-omit-frame-pointer)
  add_link_options(-fsanitize=${WEBAPI_SANITIZE})
endif()

# Unused sections and libraries cost load time in every process.
add_link_options(-Wl,-O1 -Wl,--as-needed -Wl,--gc-sections)
