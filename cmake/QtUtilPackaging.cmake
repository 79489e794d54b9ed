# Debian packages of the install tree (scripts/make-packages; `cpack -G DEB` in a build dir):
#   libqt-util1     the two shared libraries with their SONAME links (component runtime)
#   libqt-util-dev  headers, the unversioned .so links, the CMake package and qt_util.pc
#                   (component development), tied to the runtime package of the same version
# cpack packages what is built and never builds first: the packages test runs it inside a
# build tree whose other targets may still be building (`cmake --install` never builds either).
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qt-util)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "qt_util developers")
set(CPACK_PACKAGE_CONTACT "qt_util developers <qt-util@localhost>")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "Qt 5 widget utilities for the desktop client")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libqt-util1)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
  "Qt 5 widget utilities for the desktop client (shared libraries)\n\
libqt_util.so.1 and the reference host framework it calls, libtalvex_framework.so.1.")
# Dependencies come from the libraries' own NEEDED entries; the framework library that
# libqt_util.so.1 needs is in the same package, found in the staging tree.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_INSTALL_LIBDIR}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libqt-util-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
  "Qt 5 widget utilities for the desktop client (development files)\n\
Headers, the CMake package QtUtil (find_package(QtUtil)) and the pkg-config file qt_util.pc.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "libqt-util1 (= ${PROJECT_VERSION}), qtbase5-dev, libqt5svg5-dev")

include(CPack)
