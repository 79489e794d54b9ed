# Debian packages of the install tree (scripts/make-packages [--qt6]; `cpack -G DEB` in a build
# dir). Each Qt build makes two, named after it (cmake/QtUtilQt.cmake), so that all four install
# side by side:
#   libqt-util1, libqt-util-qt6-1        the two shared libraries with their SONAME links
#                                        (component runtime)
#   libqt-util-dev, libqt-util-qt6-dev   headers, the unversioned .so links, the CMake package
#                                        and the .pc file (component development), tied to the
#                                        runtime package of the same version
# Both carry the copyright file and the changelog of cmake/debian/ in usr/share/doc/<package>/.
# They are meant to be built from a tree configured with CMAKE_INSTALL_PREFIX=/usr, whose
# libraries go to Debian's multiarch directory, as scripts/make-packages does.
# cpack packages what is built and never builds first: the packages test runs it inside a
# build tree whose other targets may still be building (`cmake --install` never builds either).
set(CMAKE_SKIP_INSTALL_ALL_DEPENDENCY ON)

# Debian's library package names: the SONAME's name and version, with a hyphen between them
# when the name ends in a digit.
set(QT_UTIL_DEB_BASE "libqt-util${QT_UTIL_NAME_SUFFIX}")
if(QT_UTIL_DEB_BASE MATCHES "[0-9]$")
  set(QT_UTIL_DEB_RUNTIME "${QT_UTIL_DEB_BASE}-${PROJECT_VERSION_MAJOR}")
else()
  set(QT_UTIL_DEB_RUNTIME "${QT_UTIL_DEB_BASE}${PROJECT_VERSION_MAJOR}")
endif()
set(QT_UTIL_DEB_DEVELOPMENT "${QT_UTIL_DEB_BASE}-dev")

# The changelog's latest entry is the version being packaged; a release adds its entry first.
set(QT_UTIL_DEB_CHANGELOG "${PROJECT_SOURCE_DIR}/cmake/debian/changelog")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS "${QT_UTIL_DEB_CHANGELOG}")
file(STRINGS "${QT_UTIL_DEB_CHANGELOG}" changelog_head LIMIT_COUNT 1)
if(NOT changelog_head MATCHES "^qt-util \\(${PROJECT_VERSION}\\) ")
  message(FATAL_ERROR "cmake/debian/changelog starts with \"${changelog_head}\"; "
    "its latest entry must be version ${PROJECT_VERSION}")
endif()
# Compressed as Debian wants it: maximum compression, no name or time stamp in the header.
find_program(QT_UTIL_GZIP gzip REQUIRED)
set(QT_UTIL_DEB_CHANGELOG_GZ "${PROJECT_BINARY_DIR}/debian/changelog.gz")
file(MAKE_DIRECTORY "${PROJECT_BINARY_DIR}/debian")
execute_process(COMMAND "${QT_UTIL_GZIP}" -9 -n -c "${QT_UTIL_DEB_CHANGELOG}"
  OUTPUT_FILE "${QT_UTIL_DEB_CHANGELOG_GZ}" COMMAND_ERROR_IS_FATAL ANY)
# Native packages (the version has no Debian revision: this project makes its own packages),
# hence changelog.gz rather than changelog.Debian.gz. Only the packages carry these files; a
# plain `cmake --install` leaves them out.
foreach(component IN ITEMS runtime development)
  if(component STREQUAL "runtime")
    set(package "${QT_UTIL_DEB_RUNTIME}")
  else()
    set(package "${QT_UTIL_DEB_DEVELOPMENT}")
  endif()
  install(FILES "${PROJECT_SOURCE_DIR}/cmake/debian/copyright" "${QT_UTIL_DEB_CHANGELOG_GZ}"
          DESTINATION "${CMAKE_INSTALL_DATAROOTDIR}/doc/${package}"
          COMPONENT ${component} EXCLUDE_FROM_ALL)
endforeach()

set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME qt-util)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_VENDOR "qt_util developers")
# A domain reserved for examples: the list's real address is the client team's to fill in.
set(CPACK_PACKAGE_CONTACT "qt_util developers <qt-util@lists.qt-util.example>")
set(CPACK_PACKAGING_INSTALL_PREFIX /usr)
set(CPACK_STRIP_FILES ON)
set(CPACK_COMPONENTS_ALL runtime development)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

# Descriptions: a synopsis line, then lines of at most 80 characters.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME "${QT_UTIL_DEB_RUNTIME}")
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_DESCRIPTION
  "Qt ${QT_UTIL_QT_MAJOR} widget utilities for the desktop client (shared libraries)
libqt_util${QT_UTIL_NAME_SUFFIX}.so.1, the widget utilities built for Qt ${QT_UTIL_QT_MAJOR},
and libtalvex_framework${QT_UTIL_NAME_SUFFIX}.so.1, the reference host framework they call.")
# Dependencies come from the libraries' own NEEDED entries; the framework library that
# libqt_util needs is in the same package, found in the staging tree.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS "${CMAKE_INSTALL_LIBDIR}")
set(CPACK_DEBIAN_PACKAGE_GENERATE_SHLIBS ON)
# The linker cache is refreshed by dpkg's ldconfig trigger, not by maintainer scripts; CPack
# writes ldconfig scripts for every package with libraries under /usr/lib, which
# QtUtilDebPostBuild.cmake takes out again once it has built the packages.
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA "${PROJECT_SOURCE_DIR}/cmake/debian/triggers")
set(CPACK_POST_BUILD_SCRIPTS "${PROJECT_SOURCE_DIR}/cmake/QtUtilDebPostBuild.cmake")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME "${QT_UTIL_DEB_DEVELOPMENT}")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_DESCRIPTION
  "Qt ${QT_UTIL_QT_MAJOR} widget utilities for the desktop client (development files)
Headers in ${QT_UTIL_INSTALL_INCLUDEDIR}/, the CMake package ${QT_UTIL_PACKAGE}
(find_package(${QT_UTIL_PACKAGE})) and the pkg-config module ${QT_UTIL_PKG_CONFIG_MODULE}.")
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_DEPENDS
  "${QT_UTIL_DEB_RUNTIME} (= ${PROJECT_VERSION}), ${QT_UTIL_QT_DEBIAN_DEV}")

include(CPack)
