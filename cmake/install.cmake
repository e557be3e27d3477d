# What an installation holds: the helper and qem_ctl in bin/; the client library, the core library
# it stands on and the client's public headers; a CMake package (find_package(qem_client CONFIG),
# target qem::client) and a pkg-config file (qem_client); the protocol guide and its pictures.
include(CMakePackageConfigHelpers)

install(TARGETS qem_util qem_ctl RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
install(TARGETS qem_client qem_core EXPORT qem_client_targets
        ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})

include(${CMAKE_CURRENT_LIST_DIR}/public_headers.cmake)
foreach(header ${qem_public_headers})
  get_filename_component(folder ${header} DIRECTORY)
  install(FILES src/${header} DESTINATION ${QEM_INSTALL_HEADERDIR}/${folder})
endforeach()

set(qem_config_dir ${CMAKE_INSTALL_LIBDIR}/cmake/qem_client)
install(EXPORT qem_client_targets NAMESPACE qem:: FILE qem_clientTargets.cmake
        DESTINATION ${qem_config_dir})
configure_package_config_file(cmake/qem_clientConfig.cmake.in
  ${PROJECT_BINARY_DIR}/qem_clientConfig.cmake INSTALL_DESTINATION ${qem_config_dir})
write_basic_package_version_file(${PROJECT_BINARY_DIR}/qem_clientConfigVersion.cmake
  COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/qem_clientConfig.cmake
              ${PROJECT_BINARY_DIR}/qem_clientConfigVersion.cmake
        DESTINATION ${qem_config_dir})

# The pkg-config file finds the prefix from its own place, as the CMake package does, so a tree
# installed with --prefix or DESTDIR elsewhere still builds.
file(RELATIVE_PATH qem_pc_to_prefix ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig ${CMAKE_INSTALL_PREFIX})
string(REGEX REPLACE "/$" "" qem_pc_to_prefix "${qem_pc_to_prefix}")
configure_file(cmake/qem_client.pc.in ${PROJECT_BINARY_DIR}/qem_client.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/qem_client.pc DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig)

install(FILES docs/protocol.md docs/progress-style3.png docs/progress-question.png
        DESTINATION ${CMAKE_INSTALL_DOCDIR})
