# Builds the Debian packages of one Qt build, the way they are shipped: a RelWithDebInfo build
# of the two libraries installed under /usr (Debian's multiarch library directory), stripped,
# dependencies computed by dpkg-shlibdeps. Used by scripts/make-packages and the packages test.
#   cmake -DQT_MAJOR=<5|6> -DBUILD_DIR=<build tree, kept between runs>
#         [-DOUTPUT_DIR=<where the .deb files go; default BUILD_DIR>]
#         [-DLAUNCHER=<compiler launcher such as ccache>] -P cmake/QtUtilMakePackages.cmake
cmake_minimum_required(VERSION 3.25)
get_filename_component(source_dir "${CMAKE_CURRENT_LIST_DIR}/.." ABSOLUTE)
if(NOT QT_MAJOR OR NOT BUILD_DIR)
  message(FATAL_ERROR "usage: cmake -DQT_MAJOR=<5|6> -DBUILD_DIR=<dir> -P ${CMAKE_CURRENT_LIST_FILE}")
endif()
if(NOT OUTPUT_DIR)
  set(OUTPUT_DIR "${BUILD_DIR}")
endif()
set(launcher)
if(LAUNCHER)
  set(launcher "-DCMAKE_CXX_COMPILER_LAUNCHER=${LAUNCHER}")
endif()
cmake_host_system_information(RESULT jobs QUERY NUMBER_OF_LOGICAL_CORES)

execute_process(
  COMMAND ${CMAKE_COMMAND} -S "${source_dir}" -B "${BUILD_DIR}" -DQT_UTIL_QT_MAJOR=${QT_MAJOR}
    -DCMAKE_BUILD_TYPE=RelWithDebInfo -DCMAKE_INSTALL_PREFIX=/usr -DQT_UTIL_SANITIZE=OFF
    -DQT_UTIL_HTML_PORTABLE=OFF -DQT_UTIL_BUILD_TESTS=OFF -DQT_UTIL_BUILD_EXAMPLES=OFF
    -DQT_UTIL_BUILD_BENCHMARKS=OFF -DQT_UTIL_BUILD_FUZZERS=OFF ${launcher}
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND ${CMAKE_COMMAND} --build "${BUILD_DIR}" --parallel ${jobs}
    --target qt_util talvex_framework
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
execute_process(
  COMMAND cpack -G DEB --config "${BUILD_DIR}/CPackConfig.cmake" -B "${OUTPUT_DIR}"
  OUTPUT_QUIET COMMAND_ERROR_IS_FATAL ANY)
