# Installs the build tree into a fresh prefix, then configures and builds the meeting-window
# example on its own against that prefix only (its CMakeLists finds qt_util through the CMake
# package named PACKAGE), and plays its scenario.
file(REMOVE_RECURSE "${WORK_DIR}")
set(prefix "${WORK_DIR}/prefix")

include(${CMAKE_CURRENT_LIST_DIR}/../consumer/run_command.cmake)

run(${CMAKE_COMMAND} --install "${BUILD_DIR}" --prefix "${prefix}")
run(${CMAKE_COMMAND} -S "${SOURCE_DIR}" -B "${WORK_DIR}/build"
    "-DCMAKE_PREFIX_PATH=${prefix}" "-DQT_UTIL_PACKAGE=${PACKAGE}"
    "-DCMAKE_CXX_FLAGS=${CONSUMER_FLAGS}"
    "-DCMAKE_EXE_LINKER_FLAGS=${CONSUMER_FLAGS}")
run(${CMAKE_COMMAND} --build "${WORK_DIR}/build" --parallel 2)
set(ENV{LD_LIBRARY_PATH} "${prefix}/lib:$ENV{LD_LIBRARY_PATH}")
run("${WORK_DIR}/build/qt_util_meeting" --script --out "${WORK_DIR}/shots")
if(NOT LAST_OUTPUT MATCHES "every observation as expected")
  message(FATAL_ERROR "the installed-package build's scenario did not pass:\n${LAST_OUTPUT}")
endif()
message(STATUS "built against ${prefix} alone; the scenario passed")
