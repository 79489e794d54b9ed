# Which Qt the tree is built against: QT_UTIL_QT_MAJOR=5 (Qt 5.15, the default) or 6 (Qt 6.2
# or later). The sources are the same for both; this file is where the choice becomes CMake
# targets. It sets QT_UTIL_QT to the package name (Qt5 or Qt6). The libraries, tests,
# benchmarks and fuzzers link the versioned targets (${QT_UTIL_QT}::Core...), so that the
# installed CMake package names the Qt it was built with. The examples use Qt's versionless
# targets and commands (Qt::Widgets, qt_add_binary_resources), which Qt 5.15 and Qt 6 both
# define, because they also build on their own against an installed package.
set(QT_UTIL_QT_MAJOR 5 CACHE STRING "Qt major version to build against: 5 or 6")
set_property(CACHE QT_UTIL_QT_MAJOR PROPERTY STRINGS 5 6)
# Each build installs under names of its own, so that both can be installed side by side; the
# Qt 5 build keeps the names it has always had. Everything installed takes its name from these:
#   QT_UTIL_NAME_SUFFIX         of the library files (libqt_util<suffix>.so.1), the pkg-config
#                               module QT_UTIL_PKG_CONFIG_MODULE (qt_util<suffix>) and the
#                               Debian packages (libqt-util<suffix>...)
#   QT_UTIL_PACKAGE             the CMake package (find_package(<package>)); its imported targets
#                               are QtUtil::qt_util and QtUtil::talvex_framework in both builds
#   QT_UTIL_INSTALL_INCLUDEDIR  the one directory (include/qt_util-qt<major>) that holds every
#                               installed header, so that no generic name such as base/ or ui/
#                               lands in include/ itself
# QT_UTIL_QT_DEBIAN_DEV lists the Debian packages of this Qt's headers, which the -dev package
# needs (cmake/QtUtilPackaging.cmake).
if(QT_UTIL_QT_MAJOR STREQUAL "5")
  set(QT_UTIL_QT_MIN_VERSION 5.15)
  set(QT_UTIL_NAME_SUFFIX "")
  set(QT_UTIL_PACKAGE QtUtil)
  set(QT_UTIL_QT_DEBIAN_DEV "qtbase5-dev, libqt5svg5-dev")
elseif(QT_UTIL_QT_MAJOR STREQUAL "6")
  # The X11 connection comes from QNativeInterface::QX11Application, new in Qt 6.2.
  set(QT_UTIL_QT_MIN_VERSION 6.2)
  set(QT_UTIL_NAME_SUFFIX "-qt6")
  set(QT_UTIL_PACKAGE QtUtilQt6)
  set(QT_UTIL_QT_DEBIAN_DEV "qt6-base-dev, qt6-svg-dev")
else()
  message(FATAL_ERROR "QT_UTIL_QT_MAJOR is ${QT_UTIL_QT_MAJOR}; it must be 5 or 6")
endif()
set(QT_UTIL_QT Qt${QT_UTIL_QT_MAJOR})
set(QT_UTIL_PKG_CONFIG_MODULE qt_util${QT_UTIL_NAME_SUFFIX})
set(QT_UTIL_INSTALL_INCLUDEDIR "${CMAKE_INSTALL_INCLUDEDIR}/qt_util-qt${QT_UTIL_QT_MAJOR}")

find_package(${QT_UTIL_QT} ${QT_UTIL_QT_MIN_VERSION} REQUIRED COMPONENTS Core Gui Widgets Svg)
message(STATUS "qt_util: building against Qt ${${QT_UTIL_QT}Core_VERSION}")
