# The Debian package: cpack -G DEB (or cpack --preset package) in a build configured with the
# install prefix the package installs to, /usr for a system package (the "package" preset): the
# client library looks for the helper in that prefix's bin/.
set(QEM_PACKAGE_MAINTAINER "qem_util developers <developers@qem-util.invalid>"
    CACHE STRING "The Maintainer of the Debian package")

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qem-util)
set(CPACK_PACKAGE_VERSION ${PROJECT_VERSION})
set(CPACK_PACKAGE_VENDOR "qem_util developers")
set(CPACK_PACKAGE_CONTACT "${QEM_PACKAGE_MAINTAINER}")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY
    "native floating progress windows for a program without a GUI toolkit")
# The summary above is the first line of the Description field; CPack indents these lines and
# turns the empty one into the paragraph mark.
set(CPACK_DEBIAN_PACKAGE_DESCRIPTION
    "qem_util is a small helper process that shows floating progress windows (title, message,
progress bar, up to four buttons) for a program that launches it and drives it through
files, and tells that program which button was pressed.

This package holds the helper, the qem_ctl command that drives it from scripts, the C++
client library qem_client with its headers, a CMake package (qem::client) and a
pkg-config file, and the protocol guide.")
set(CPACK_PACKAGING_INSTALL_PREFIX ${CMAKE_INSTALL_PREFIX})
set(CPACK_STRIP_FILES ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION devel)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
# The Qt libraries the helper links come from dpkg-shlibdeps; the platform plugins (X11 and
# offscreen) are loaded at run time, so they are named here.
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_DEPENDS "qt6-qpa-plugins")
include(CPack)
