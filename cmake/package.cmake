# The Debian packages: cpack -G DEB (or cpack --preset package) in a build configured with the
# install prefix the packages install to, /usr for a system package (the "package" preset): the
# client library looks for the helper in that prefix's bin/. One package per install component
# (cmake/install.cmake):
#   qem-util      the helper, qem_ctl, their manual pages and the protocol guide;
#   qem-util-dev  the client and core static libraries, their headers, the CMake package and the
#                 pkg-config file; it needs the helper of the same version.
set(QEM_PACKAGE_MAINTAINER "qem_util developers <developers@qem-util.invalid>"
    CACHE STRING "The Maintainer of the Debian packages")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qem-util)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "qem_util developers")
set(CPACK_PACKAGE_CONTACT "${QEM_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime dev)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

# The first line of each description is its summary; CPack indents the others and turns the
# empty one into the paragraph mark. Lines stay within 80 columns.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME qem-util)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION utils)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
    "floating progress windows for programs without a GUI toolkit
qem_util is a small helper process that shows floating progress windows
(title, message, progress bar, up to four buttons) for a program that
launches it and drives it through files, and tells that program which
button was pressed.

This package holds the helper, the qem_ctl command that drives it from
scripts, their manual pages and the protocol guide.")
# The Qt libraries the helper links come from dpkg-shlibdeps; the platform plugins (X11 and
# offscreen) are loaded at run time, so they are named here.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_DEPENDS "qt6-qpa-plugins")

set(CPACK_DEBIAN_DEV_PACKAGE_NAME qem-util-dev)
set(CPACK_DEBIAN_DEV_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEV_DESCRIPTION
    "C++ client library for qem_util's floating progress windows
qem_client starts the qem_util helper from a C++20 program, shows and
changes its progress windows and questions, and hands back the buttons
pressed.

This package holds the static library qem_client with its headers, the
core library qem_core that it needs, a CMake package (qem::client) and a
pkg-config file (qem_client).")
set(CPACK_DEBIAN_DEV_PACKAGE_DEPENDS "qem-util (= ${PROJECT_VERSION})")
include(CPack)
