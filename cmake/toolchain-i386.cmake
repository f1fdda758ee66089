# 32-bit x86 on an x86-64 Debian: the compiler is the system's own with -m32, the
# libraries come from the folder that script/i386-sysroot unpacks.
set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR i686)
set(CMAKE_CXX_COMPILER g++)
set(CMAKE_LIBRARY_ARCHITECTURE i386-linux-gnu)

get_filename_component(webapi_default_sysroot
  "${CMAKE_CURRENT_LIST_DIR}/../build/i386-sysroot" ABSOLUTE)
set(WEBAPI_I386_SYSROOT "${webapi_default_sysroot}" CACHE PATH "Folder with the i386 packages")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES WEBAPI_I386_SYSROOT)
if(NOT EXISTS "${WEBAPI_I386_SYSROOT}/usr/lib/i386-linux-gnu")
  message(FATAL_ERROR "No i386 packages in ${WEBAPI_I386_SYSROOT}; run script/i386-sysroot")
endif()

# The binaries run on this machine as they are.
set(CMAKE_CROSSCOMPILING_EMULATOR "" CACHE STRING "" FORCE)

set(CMAKE_FIND_ROOT_PATH "${WEBAPI_I386_SYSROOT}")
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_LIBDIR} "${WEBAPI_I386_SYSROOT}/usr/lib/i386-linux-gnu/pkgconfig")
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${WEBAPI_I386_SYSROOT}")

# SSE2 arithmetic, so that doubles round as on x86-64.
add_compile_options(-m32 -march=i686 -msse2 -mfpmath=sse)
add_compile_options("SHELL:-isystem ${WEBAPI_I386_SYSROOT}/usr/include/i386-linux-gnu")
# DT_RPATH, unlike DT_RUNPATH, is searched for the libraries' own libraries too.
add_link_options(-m32 -Wl,--disable-new-dtags
  "-Wl,-rpath,${WEBAPI_I386_SYSROOT}/usr/lib/i386-linux-gnu")
