# Builds the Debian packages of both Qt builds as they are shipped (cmake/QtUtilMakePackages.cmake,
# which builds the two libraries of each in WORK_DIR, whatever this tree's own Qt), checks their
# names, control fields and file lists, checks that no path is in two of the four, extracts all
# four into one scratch root (never into the machine itself) and checks that every package's
# files are there intact, runs lintian on the four, and builds and runs the consumer project
# against that root for each build, through the CMake package and through pkg-config.
#   -DSOURCE_DIR=<tests/consumer> -DWORK_DIR=<scratch>
#   -DBUILDS_DIR=<where the two package builds are kept between runs>
#   -DVERSION=<project version> -DLIBDIR=<library directory under /usr, e.g.
#   lib/x86_64-linux-gnu> -DHEADERS_FILE=<file listing the installed headers>
#   [-DLAUNCHER=<compiler launcher for the package builds>]
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/run_command.cmake)
set(debs "${WORK_DIR}/debs")
set(root "${WORK_DIR}/root")
foreach(dir IN ITEMS "${debs}" "${root}" "${WORK_DIR}/consumers")
  file(REMOVE_RECURSE "${dir}")
endforeach()

function(fail what)
  message(FATAL_ERROR "${what}")
endfunction()

# The names each build ships under, one row per build:
#   <Qt major>|<runtime package>|<-dev package>|<library suffix>|<CMake package>|
#   <pkg-config module>|<Qt runtime package the libraries need>|<Qt -dev packages>
set(builds
  "5|libqt-util1|libqt-util-dev||QtUtil|qt_util|libqt5core5a|qtbase5-dev,libqt5svg5-dev"
  "6|libqt-util-qt6-1|libqt-util-qt6-dev|-qt6|QtUtilQt6|qt_util-qt6|libqt6core6|qt6-base-dev,qt6-svg-dev")
# Sets major, runtime, dev, suffix, cmake_package, pc_module, qt_core and qt_dev from a row.
macro(read_row row)
  string(REPLACE "|" ";" fields "${row}")
  list(GET fields 0 major)
  list(GET fields 1 runtime)
  list(GET fields 2 dev)
  list(GET fields 3 suffix)
  list(GET fields 4 cmake_package)
  list(GET fields 5 pc_module)
  list(GET fields 6 qt_core)
  list(GET fields 7 qt_dev)
  string(REPLACE "," ";" qt_dev "${qt_dev}")
endmacro()

foreach(build IN LISTS builds)
  read_row("${build}")
  run(${CMAKE_COMMAND} -DQT_MAJOR=${major} -DBUILD_DIR=${BUILDS_DIR}/build-qt${major}
      -DOUTPUT_DIR=${debs} -DLAUNCHER=${LAUNCHER}
      -P ${CMAKE_CURRENT_LIST_DIR}/../../cmake/QtUtilMakePackages.cmake)
endforeach()
file(GLOB made RELATIVE "${debs}" "${debs}/*.deb")
list(SORT made)
message(STATUS "packages: ${made}")
list(LENGTH made count)
if(NOT count EQUAL 4)
  fail("expected four packages, cpack made: ${made}")
endif()

function(expect_field deb field regex)
  run(dpkg-deb --field "${deb}" ${field})
  string(STRIP "${LAST_OUTPUT}" value)
  if(NOT value MATCHES "${regex}")
    fail("${deb}: ${field} is \"${value}\", expected to match \"${regex}\"")
  endif()
  message(STATUS "${field}: ${value}")
endfunction()

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

file(STRINGS "${HEADERS_FILE}" headers)
string(REPLACE "." "\\." version_regex "${VERSION}")
set(lib "usr/${LIBDIR}")
set(all_paths)
set(all_debs)
foreach(build IN LISTS builds)
  read_row("${build}")
  set(runtime_deb "${debs}/${runtime}_${VERSION}_amd64.deb")
  set(dev_deb "${debs}/${dev}_${VERSION}_amd64.deb")
  foreach(deb IN ITEMS "${runtime_deb}" "${dev_deb}")
    if(NOT EXISTS "${deb}")
      fail("the Qt ${major} build did not make ${deb}")
    endif()
  endforeach()
  list(APPEND all_debs "${runtime_deb}" "${dev_deb}")

  # Control fields.
  expect_field("${runtime_deb}" Package "^${runtime}$")
  expect_field("${runtime_deb}" Version "^${version_regex}$")
  expect_field("${runtime_deb}" Architecture "^amd64$")
  expect_field("${runtime_deb}" Description "^Qt ${major} widget utilities")
  # Computed by dpkg-shlibdeps from the libraries' NEEDED entries.
  expect_field("${runtime_deb}" Depends "(^|, )${qt_core} \\(>= [0-9.]+\\)")
  expect_field("${dev_deb}" Package "^${dev}$")
  expect_field("${dev_deb}" Version "^${version_regex}$")
  expect_field("${dev_deb}" Description "^Qt ${major} widget utilities")
  expect_field("${dev_deb}" Depends "(^|, )${runtime} \\(= ${version_regex}\\)(,|$)")
  foreach(package IN LISTS qt_dev)
    expect_field("${dev_deb}" Depends "(^|, )${package}(,|$)")
  endforeach()

  # The runtime package: exactly the libraries, their SONAME links and the documentation.
  package_files("${runtime_deb}" runtime_files)
  set(expected_runtime "usr/share/doc/${runtime}/changelog.gz" "usr/share/doc/${runtime}/copyright")
  foreach(name IN ITEMS qt_util talvex_framework)
    list(APPEND expected_runtime "${lib}/lib${name}${suffix}.so.${VERSION}"
         "${lib}/lib${name}${suffix}.so.1 -> lib${name}${suffix}.so.${VERSION}")
  endforeach()
  list(SORT expected_runtime)
  if(NOT runtime_files STREQUAL expected_runtime)
    string(REPLACE ";" "\n  " got "${runtime_files}")
    string(REPLACE ";" "\n  " want "${expected_runtime}")
    fail("${runtime} files:\n  ${got}\nexpected exactly:\n  ${want}")
  endif()

  # The -dev package: every listed header under the build's own directory, the .so links, the
  # CMake package, the .pc file and the documentation, and nothing else.
  package_files("${dev_deb}" dev_files)
  set(include "usr/include/qt_util-qt${major}")
  set(cmake_dir "${lib}/cmake/${cmake_package}")
  set(expected_dev
    "${lib}/libqt_util${suffix}.so -> libqt_util${suffix}.so.1"
    "${lib}/libtalvex_framework${suffix}.so -> libtalvex_framework${suffix}.so.1"
    "${lib}/pkgconfig/${pc_module}.pc"
    "${cmake_dir}/${cmake_package}Config.cmake"
    "${cmake_dir}/${cmake_package}ConfigVersion.cmake"
    "${cmake_dir}/QtUtilTargets.cmake"
    "usr/share/doc/${dev}/changelog.gz"
    "usr/share/doc/${dev}/copyright")
  foreach(header IN LISTS headers)
    list(APPEND expected_dev "${include}/${header}")
  endforeach()
  foreach(file IN LISTS expected_dev)
    if(NOT file IN_LIST dev_files)
      fail("${dev} lacks ${file}")
    endif()
  endforeach()
  string(REPLACE "." "\\." lib_regex "${lib}")
  foreach(file IN LISTS dev_files)
    if(file IN_LIST expected_dev)
      continue()
    endif()
    # Besides the listed files only the CMake package's per-configuration targets file.
    if(NOT file MATCHES "^${lib_regex}/cmake/${cmake_package}/QtUtilTargets-[a-z]+\\.cmake$")
      fail("${dev} carries an unexpected file: ${file}")
    endif()
  endforeach()
  list(LENGTH dev_files count)
  message(STATUS "${runtime}: ${runtime_files}")
  message(STATUS "${dev}: ${count} files")

  foreach(file IN LISTS runtime_files dev_files)
    string(REGEX REPLACE " -> .*" "" path "${file}")
    list(APPEND all_paths "${path}")
  endforeach()
endforeach()

# Side by side: no path in two packages, so that dpkg installs all four together.
list(SORT all_paths)
set(previous "")
set(shared)
foreach(path IN LISTS all_paths)
  if(path STREQUAL previous)
    list(APPEND shared "${path}")
  endif()
  set(previous "${path}")
endforeach()
if(shared)
  string(REPLACE ";" "\n  " shared "${shared}")
  fail("paths in two packages, which dpkg refuses to install together:\n  ${shared}")
endif()
list(LENGTH all_paths count)
message(STATUS "${count} paths, none in two packages")

# Extract all four into one root, then check that every package's files are still there as the
# package has them: links with their targets, regular files by the package's own md5sums.
foreach(deb IN LISTS all_debs)
  run(dpkg-deb -x "${deb}" "${root}")
endforeach()
foreach(deb IN LISTS all_debs)
  package_files("${deb}" files)
  foreach(file IN LISTS files)
    if(file MATCHES "^(.*) -> (.*)$")
      set(path "${root}/${CMAKE_MATCH_1}")
      set(target "${CMAKE_MATCH_2}")
      set(got "")
      if(IS_SYMLINK "${path}")
        file(READ_SYMLINK "${path}" got)
      endif()
      if(NOT got STREQUAL target)
        fail("after extracting all four, ${CMAKE_MATCH_1} is not the link to ${target} of ${deb}")
      endif()
    elseif(NOT EXISTS "${root}/${file}" OR IS_SYMLINK "${root}/${file}")
      fail("after extracting all four, ${file} of ${deb} is missing")
    endif()
  endforeach()
  run(dpkg-deb --info "${deb}" md5sums)
  string(REPLACE "\n" ";" sums "${LAST_OUTPUT}")
  foreach(line IN LISTS sums)
    if(line MATCHES "^([0-9a-f]+)  (.+)$")
      file(MD5 "${root}/${CMAKE_MATCH_2}" md5)
      if(NOT md5 STREQUAL CMAKE_MATCH_1)
        fail("after extracting all four, ${CMAKE_MATCH_2} differs from ${deb}'s")
      endif()
    endif()
  endforeach()
endforeach()
file(GLOB include_entries RELATIVE "${root}/usr/include" "${root}/usr/include/*")
if(NOT include_entries STREQUAL "qt_util-qt5;qt_util-qt6")
  fail("usr/include holds \"${include_entries}\"; expected qt_util-qt5 and qt_util-qt6 only")
endif()

# Debian's package checker: no error and no warning (information and pedantic tags, such as
# the missing symbols file or the include/ segment of base/common/include, are not failures).
find_program(LINTIAN lintian)
if(NOT LINTIAN)
  fail("lintian is not installed (scripts/install-deps installs it)")
endif()
execute_process(COMMAND "${LINTIAN}" --fail-on error,warning ${all_debs}
  RESULT_VARIABLE rc OUTPUT_VARIABLE out ERROR_VARIABLE err)
if(NOT rc EQUAL 0 OR out MATCHES "(^|\n)[EW]: ")
  fail("lintian (status ${rc}):\n${out}${err}")
endif()
message(STATUS "lintian: no errors or warnings in the four packages")

# Each build's consumer, built and run against the root: its CMake package and its .pc file.
set(ENV{LD_LIBRARY_PATH} "${root}/${lib}:$ENV{LD_LIBRARY_PATH}")
set(ENV{PKG_CONFIG_PATH} "${root}/${lib}/pkgconfig")
foreach(build IN LISTS builds)
  read_row("${build}")
  foreach(use_pkg_config IN ITEMS OFF ON)
    set(consumer "${WORK_DIR}/consumers/qt${major}-pkg-config-${use_pkg_config}")
    run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${consumer}" "-DCMAKE_PREFIX_PATH=${root}/usr"
        "-DCONSUMER_USE_PKG_CONFIG=${use_pkg_config}" "-DQT_UTIL_PACKAGE=${cmake_package}"
        "-DQT_UTIL_PKG_CONFIG_MODULE=${pc_module}")
    run(${CMAKE_COMMAND} --build "${consumer}")
    # The consumer must load the extracted libraries of its own build, and its Qt.
    run(ldd "${consumer}/consumer")
    foreach(needed IN ITEMS "${root}/${lib}/libqt_util${suffix}.so.1"
                            "${root}/${lib}/libtalvex_framework${suffix}.so.1"
                            "libQt${major}Core.so.${major}")
      string(FIND "${LAST_OUTPUT}" "${needed}" found)
      if(found EQUAL -1)
        fail("the Qt ${major} consumer (pkg-config ${use_pkg_config}) does not load "
             "${needed}:\n${LAST_OUTPUT}")
      endif()
    endforeach()
    run("${consumer}/consumer")
    if(NOT LAST_OUTPUT MATCHES "consumer OK")
      fail("the Qt ${major} consumer did not report success: ${LAST_OUTPUT}")
    endif()
    message(STATUS "Qt ${major}, pkg-config ${use_pkg_config}: ${LAST_OUTPUT}")
  endforeach()
endforeach()
