# What an installation holds: the helper and qem_ctl in bin/; the client library, the core library
# it stands on and the client's public headers; a CMake package (find_package(qem_client CONFIG),
# target qem::client) and a pkg-config file (qem_client); the protocol guide and its pictures.
include(CMakePackageConfigHelpers)

# It comes in two parts, which the Debian packages follow (cmake/package.cmake): runtime
# (qem-util), the programs, their manual pages and the guide; dev (qem-util-dev), the libraries,
# the headers, the CMake package and the pkg-config file. Each part's documents folder holds the
# copyright file and the changelog, as Debian asks. `cmake --install` without --component
# installs both.

set(qem_dev_docdir ${CMAKE_INSTALL_DATAROOTDIR}/doc/qem-util-dev)

install(TARGETS qem_util qem_ctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
install(FILES ${qem_man_pages} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT runtime)
install(FILES docs/protocol.md docs/progress-style3.png docs/progress-question.png
        DESTINATION ${CMAKE_INSTALL_DOCDIR} COMPONENT runtime)

install(TARGETS qem_client qem_core EXPORT qem_client_targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT dev)

include(${CMAKE_CURRENT_LIST_DIR}/public_headers.cmake)
foreach(header ${qem_public_headers})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES src/${header} DESTINATION ${QEM_INSTALL_HEADERDIR}/${folder} COMPONENT dev)
endforeach()

set(qem_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qem_client)
install(EXPORT qem_client_targets NAMESPACE qem:: FILE qem_clientTargets.cmake
        DESTINATION ${qem_config_dir} COMPONENT dev)
configure_package_config_file(cmake/qem_clientConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qem_clientConfig.cmake INSTALL_DESTINATION ${qem_config_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qem_clientConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qem_clientConfig.cmake
              ${PROJECT_BINARY_DIR}/qem_clientConfigVersion.cmake
        DESTINATION ${qem_config_dir} COMPONENT dev)

# The pkg-config file finds the prefix from its own place, as the CMake package does, so a tree
# installed with --prefix or DESTDIR elsewhere still builds.
file(RELATIVE_PATH qem_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" qem_pc_to_prefix "${qem_pc_to_prefix}")
configure_file(cmake/qem_client.pc.in ${PROJECT_BINARY_DIR}/qem_client.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qem_client.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
        COMPONENT dev)

# The changelog, compressed as Debian keeps it; its newest entry must be this version's.
file(STRINGS cmake/debian/changelog qem_changelog_top LIMIT_COUNT 1)
if(NOT qem_changelog_top MATCHES "^qem-util \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "cmake/debian/changelog begins with \"${qem_changelog_top}\": "
                      "its newest entry must be for version ${PROJECT_VERSION}")
endif()
find_program(QEM_GZIP gzip REQUIRED)
add_custom_command(OUTPUT changelog.gz
  COMMAND ${CMAKE_COMMAND} -E copy ${PROJECT_SOURCE_DIR}/cmake/debian/changelog changelog
  COMMAND ${QEM_GZIP} -9nf changelog
  DEPENDS cmake/debian/changelog VERBATIM)
add_custom_target(changelog ALL DEPENDS changelog.gz)
foreach(part runtime dev)
  set(docdir ${CMAKE_INSTALL_DOCDIR})
  if(part STREQUAL "dev")
    set(docdir ${qem_dev_docdir})
  endif()
  install(FILES cmake/debian/copyright ${PROJECT_BINARY_DIR}/changelog.gz DESTINATION ${docdir}
          COMPONENT ${part})
endforeach()

# A stripped installation (cmake --install --strip, and the packages) strips the static
# libraries of their debug information too, which CMake leaves in, and drops the compiler's
# notes (.comment, .note) that the plain strip of the executables keeps. GNU strip only.
if(CMAKE_STRIP AND NOT APPLE)
  set(qem_strip_options --remove-section=.comment --remove-section=.note)
  install(CODE "
    if(CMAKE_INSTALL_DO_STRIP)
      foreach(program qem_util qem_ctl)
        execute_process(COMMAND \"${CMAKE_STRIP}\" ${qem_strip_options}
          \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_BINDIR}/\${program}\"
          COMMAND_ERROR_IS_FATAL ANY)
      endforeach()
    endif()" COMPONENT runtime)
  install(CODE "
    if(CMAKE_INSTALL_DO_STRIP)
      foreach(library $<TARGET_FILE_NAME:qem_client> $<TARGET_FILE_NAME:qem_core>)
        execute_process(COMMAND \"${CMAKE_STRIP}\" --strip-debug --enable-deterministic-archives
          ${qem_strip_options}
          \"\$ENV{DESTDIR}\${CMAKE_INSTALL_PREFIX}/${CMAKE_INSTALL_LIBDIR}/\${library}\"
          COMMAND_ERROR_IS_FATAL ANY)
      endforeach()
    endif()" COMPONENT dev)
endif()
