# Installs the build tree into a fresh prefix, checks that every installed header is in the
# build's own header directory, then configures, builds and runs the consumer project against
# that prefix only, and checks the pkg-config file.
#   -DBUILD_DIR=<configured build tree> -DSOURCE_DIR=<tests/consumer> -DWORK_DIR=<scratch>
#   -DQT_MAJOR=<5|6> -DPACKAGE=<CMake package> -DPC_MODULE=<pkg-config module>
#   [-DCONSUMER_FLAGS=<extra compile and link flags>]
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

include(${CMAKE_CURRENT_LIST_DIR}/run_command.cmake)

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
# One directory per Qt build, never generic names such as base/ or ui/ in include/ itself.
set(header_dir "qt_util-qt${QT_MAJOR}")
file(GLOB include_entries RELATIVE "${prefix}/include" "${prefix}/include/*")
if(NOT include_entries STREQUAL header_dir)
  message(FATAL_ERROR "include/ holds \"${include_entries}\"; expected only ${header_dir}/")
endif()

run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DQT_UTIL_PACKAGE=${PACKAGE}"
    "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${CONSUMER_FLAGS}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build")
set(ENV{LD_LIBRARY_PATH} "${prefix}/lib:$ENV{LD_LIBRARY_PATH}")
run("${WORK_DIR}/build/consumer")
message(STATUS "${LAST_OUTPUT}")
if(NOT LAST_OUTPUT MATCHES "consumer OK")
  message(FATAL_ERROR "consumer did not report success: ${LAST_OUTPUT}")
endif()

find_program(PKG_CONFIG pkg-config)
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} "${prefix}/lib/pkgconfig")
  run(${PKG_CONFIG} --libs --cflags "${PC_MODULE}")
  if(NOT LAST_OUTPUT MATCHES "-lqt_util")
    message(FATAL_ERROR "${PC_MODULE}.pc gives unexpected flags: ${LAST_OUTPUT}")
  endif()
  run(${PKG_CONFIG} --variable=includedir "${PC_MODULE}")
  string(STRIP "${LAST_OUTPUT}" includedir)
  if(NOT EXISTS "${includedir}/qt_util/version.h" OR NOT includedir MATCHES "/include/${header_dir}$")
    message(FATAL_ERROR "${PC_MODULE}.pc's includedir ${includedir} is not ${header_dir}/")
  endif()
endif()
