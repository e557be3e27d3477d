# The package build (the "package" preset, QEM_DPKG_BUILDFLAGS) compiles and links with Debian's
# own flags, as dpkg-buildflags gives them with every hardening feature on: fortified libc
# calls, the stack protector, format checks, relocations made read-only and bound at start
# (relro, bindnow). Code is position-independent throughout: the executables are PIE, and the
# static libraries of the -dev package can go into a user's shared library too.
option(QEM_DPKG_BUILDFLAGS "Compile and link with the hardened flags of dpkg-buildflags" OFF)
if(QEM_DPKG_BUILDFLAGS)
  find_program(QEM_DPKG_BUILDFLAGS_TOOL dpkg-buildflags REQUIRED)
  foreach(kind CPPFLAGS CXXFLAGS LDFLAGS)
    execute_process(
      COMMAND ${CMAKE_COMMAND} -E env DEB_BUILD_MAINT_OPTIONS=hardening=+all
              ${QEM_DPKG_BUILDFLAGS_TOOL} --get ${kind}
      WORKING_DIRECTORY ${PROJECT_SOURCE_DIR}
      OUTPUT_VARIABLE flags OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
    separate_arguments(flags UNIX_COMMAND "${flags}")
    if(kind STREQUAL "LDFLAGS")
      add_link_options(${flags})
    else()
      add_compile_options(${flags})
    endif()
  endforeach()
  include(CheckPIESupported)
  check_pie_supported()
  set(CMAKE_POSITION_INDEPENDENT_CODE ON)
endif()
