# Installs the build tree into a fresh prefix, then configures, builds and runs the consumer
# project against that prefix only, and checks the pkg-config file.
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

include(${CMAKE_CURRENT_LIST_DIR}/run_command.cmake)

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${CONSUMER_FLAGS}")
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
  run(${PKG_CONFIG} --libs --cflags qt_util)
  if(NOT LAST_OUTPUT MATCHES "-lqt_util" OR NOT LAST_OUTPUT MATCHES "-I.*include")
    message(FATAL_ERROR "qt_util.pc gives unexpected flags: ${LAST_OUTPUT}")
  endif()
endif()
