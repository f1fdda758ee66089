# GTest::gtest_main and GTest::gmock: the packaged libraries where they fit, else
# built from the packaged sources (a cross build has no library of its own kind).
if(NOT CMAKE_CROSSCOMPILING)
  find_package(GTest QUIET)
endif()
if(NOT TARGET GTest::gmock)
  set(googletest_source_dir "/usr/src/googletest" CACHE PATH "Sources of GoogleTest")
  set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
  add_subdirectory("${googletest_source_dir}" "${PROJECT_BINARY_DIR}/googletest"
    EXCLUDE_FROM_ALL SYSTEM)
  foreach(library gtest gtest_main gmock)
    if(NOT TARGET GTest::${library})
      add_library(GTest::${library} ALIAS ${library})
    endif()
  endforeach()
endif()
