# Builds the Debian packages of the build tree with CPack, checks their control fields and file
# lists, extracts them into a temporary root (never into the machine itself) and builds and runs
# the consumer project against that root, through the CMake package and through pkg-config.
#   -DBUILD_DIR=<configured build tree> -DSOURCE_DIR=<tests/consumer> -DWORK_DIR=<scratch>
#   -DVERSION=<project version> -DLIBDIR=<library directory under the prefix, e.g. lib>
#   -DHEADERS_FILE=<file listing the installed headers>
#   [-DCONSUMER_FLAGS=<extra compile and link flags>]
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run_command.cmake)
file(REMOVE_RECURSE "${WORK_DIR}")
set(root "${WORK_DIR}/root")
set(runtime_deb "${WORK_DIR}/libqt-util1_${VERSION}_amd64.deb")
set(dev_deb "${WORK_DIR}/libqt-util-dev_${VERSION}_amd64.deb")

function(fail what)
  message(FATAL_ERROR "${what}")
endfunction()

run(cpack -G DEB --config "${BUILD_DIR}/CPackConfig.cmake" -B "${WORK_DIR}")
foreach(deb IN ITEMS "${runtime_deb}" "${dev_deb}")
  if(NOT EXISTS "${deb}")
    fail("cpack did not make ${deb}")
  endif()
endforeach()

# Control fields.
function(expect_field deb field regex)
  run(dpkg-deb --field "${deb}" ${field})
  string(STRIP "${LAST_OUTPUT}" value)
  if(NOT value MATCHES "${regex}")
    fail("${deb}: ${field} is \"${value}\", expected to match \"${regex}\"")
  endif()
  message(STATUS "${field}: ${value}")
endfunction()
string(REPLACE "." "\\." version_regex "${VERSION}")
expect_field("${runtime_deb}" Package "^libqt-util1$")
expect_field("${runtime_deb}" Version "^${version_regex}$")
expect_field("${runtime_deb}" Architecture "^amd64$")
# Computed by dpkg-shlibdeps from the libraries' NEEDED entries.
expect_field("${runtime_deb}" Depends "libqt5core5a \\(>= [0-9.]+\\).*libqt5widgets5 \\(>= [0-9.]+\\)")
expect_field("${dev_deb}" Package "^libqt-util-dev$")
expect_field("${dev_deb}" Version "^${version_regex}$")
expect_field("${dev_deb}" Depends "(^|, )libqt-util1 \\(= ${version_regex}\\)(,|$)")
expect_field("${dev_deb}" Depends "(^|, )qtbase5-dev(,|$)")
expect_field("${dev_deb}" Depends "(^|, )libqt5svg5-dev(,|$)")

# File lists: "<path>" for files, "<path> -> <target>" for links, directories left out.
function(package_files deb out_var)
  run(dpkg-deb --contents "${deb}")
  string(REPLACE "\n" ";" lines "${LAST_OUTPUT}")
  set(files)
  foreach(line IN LISTS lines)
    if(line MATCHES "^[-l][^ ]* +[^ ]+ +[0-9]+ +[^ ]+ +[^ ]+ +\\./(.*)$")
      list(APPEND files "${CMAKE_MATCH_1}")
    endif()
  endforeach()
  list(SORT files)
  set(${out_var} "${files}" PARENT_SCOPE)
endfunction()

package_files("${runtime_deb}" runtime_files)
set(expected_runtime)
foreach(lib IN ITEMS qt_util talvex_framework)
  list(APPEND expected_runtime "usr/${LIBDIR}/lib${lib}.so.${VERSION}"
       "usr/${LIBDIR}/lib${lib}.so.1 -> lib${lib}.so.${VERSION}")
endforeach()
list(SORT expected_runtime)
if(NOT runtime_files STREQUAL expected_runtime)
  string(REPLACE ";" "\n  " got "${runtime_files}")
  string(REPLACE ";" "\n  " want "${expected_runtime}")
  fail("libqt-util1 files:\n  ${got}\nexpected exactly:\n  ${want}")
endif()

package_files("${dev_deb}" dev_files)
file(STRINGS "${HEADERS_FILE}" headers)
set(expected_dev
  "usr/${LIBDIR}/libqt_util.so -> libqt_util.so.1"
  "usr/${LIBDIR}/libtalvex_framework.so -> libtalvex_framework.so.1"
  "usr/${LIBDIR}/pkgconfig/qt_util.pc"
  "usr/${LIBDIR}/cmake/QtUtil/QtUtilConfig.cmake"
  "usr/${LIBDIR}/cmake/QtUtil/QtUtilConfigVersion.cmake"
  "usr/${LIBDIR}/cmake/QtUtil/QtUtilTargets.cmake")
foreach(header IN LISTS headers)
  list(APPEND expected_dev "usr/include/qt_util-qt5/${header}")
endforeach()
foreach(file IN LISTS expected_dev)
  list(FIND dev_files "${file}" index)
  if(index EQUAL -1)
    fail("libqt-util-dev lacks ${file}")
  endif()
endforeach()
foreach(file IN LISTS dev_files)
  string(REGEX REPLACE " -> .*" "" path "${file}")
  if(path MATCHES "\\.so\\.[0-9]" OR path MATCHES "_p\\.h$")
    fail("libqt-util-dev must not carry ${file}")
  endif()
  string(REPLACE "${LIBDIR}/" "<libdir>/" generic "${file}")
  if(NOT generic MATCHES "^usr/(include/qt_util-qt5/|<libdir>/libqt_util\\.so |<libdir>/libtalvex_framework\\.so |<libdir>/pkgconfig/qt_util\\.pc$|<libdir>/cmake/QtUtil/QtUtil[A-Za-z-]*\\.cmake$)")
    fail("libqt-util-dev carries an unexpected file: ${file}")
  endif()
endforeach()
list(LENGTH dev_files count)
message(STATUS "libqt-util1: ${runtime_files}")
message(STATUS "libqt-util-dev: ${count} files")

# Extract both into a private root and build the consumer against it, both ways.
run(dpkg-deb -x "${runtime_deb}" "${root}")
run(dpkg-deb -x "${dev_deb}" "${root}")
set(ENV{LD_LIBRARY_PATH} "${root}/usr/${LIBDIR}:$ENV{LD_LIBRARY_PATH}")
set(ENV{PKG_CONFIG_PATH} "${root}/usr/${LIBDIR}/pkgconfig")
foreach(mode IN ITEMS cmake pkg-config)
  if(mode STREQUAL "pkg-config")
    set(use_pkg_config ON)
  else()
    set(use_pkg_config OFF)
  endif()
  set(build "${WORK_DIR}/consumer-${mode}")
  run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${build}" "-DCMAKE_PREFIX_PATH=${root}/usr"
      "-DCONSUMER_USE_PKG_CONFIG=${use_pkg_config}" "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}"
      "-DCMAKE_EXE_LINKER_FLAGS=${CONSUMER_FLAGS}")
  run(${CMAKE_COMMAND} --build "${build}")
  # The consumer must load the extracted library, not one of the build tree.
  run(ldd "${build}/consumer")
  string(FIND "${LAST_OUTPUT}" "${root}/usr/${LIBDIR}/libqt_util.so.1" found)
  if(found EQUAL -1)
    fail("the ${mode} consumer does not load the extracted library:\n${LAST_OUTPUT}")
  endif()
  run("${build}/consumer")
  if(NOT LAST_OUTPUT MATCHES "consumer OK")
    fail("${mode} consumer did not report success: ${LAST_OUTPUT}")
  endif()
  message(STATUS "${mode}: ${LAST_OUTPUT}")
endforeach()
