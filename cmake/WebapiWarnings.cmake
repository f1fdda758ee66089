# webapi_warnings: the warnings that this project's own code must be free of.
add_library(webapi_warnings INTERFACE)
target_compile_options(webapi_warnings INTERFACE
  -Wall -Wextra -Wpedantic
  -Wshadow -Wconversion -Wold-style-cast
  -Wnon-virtual-dtor -Woverloaded-virtual
  -Wformat=2 -Wcast-qual -Wundef
  $<$<BOOL:${WEBAPI_WERROR}>:-Werror>)
