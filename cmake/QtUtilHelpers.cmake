# qt_util_add_test(NAME <name> [SOURCES <extra sources>...] [LIBS <libraries>...]
#                  [X11 | WAYLAND [SEAT]] [TIMEOUT <seconds>] [ENVIRONMENT <VAR=value>...])
#
# Builds tests/tst_<name>.cpp (plus any extra sources) into the executable tst_<name>, links it
# against qt_util, QtTest and the test support headers, and registers it with CTest.
# Tests run on the offscreen platform; X11 runs them under xvfb-run with the xcb platform
# instead, for the few that need a real X server (label "x11"), and WAYLAND under
# scripts/weston-run on Qt's Wayland platform (label "wayland"; SEAT gives the compositor a
# keyboard and pointer, so that it activates the windows it maps). ENVIRONMENT adds variables to
# the tests' common environment (QT_SCALE_FACTOR=1.5, say).
function(qt_util_add_test)
  cmake_parse_arguments(ARG "X11;WAYLAND;SEAT" "NAME;TIMEOUT" "SOURCES;LIBS;ENVIRONMENT" ${ARGN})
  if(NOT ARG_NAME)
    message(FATAL_ERROR "qt_util_add_test: NAME is required")
  endif()
  set(timeout)
  if(ARG_TIMEOUT)
    set(timeout TIMEOUT ${ARG_TIMEOUT})
  endif()
  set(target tst_${ARG_NAME})
  add_executable(${target} ${CMAKE_CURRENT_SOURCE_DIR}/tst_${ARG_NAME}.cpp ${ARG_SOURCES})
  target_link_libraries(${target} PRIVATE qt_util ${QT_UTIL_QT}::Test ${QT_UTIL_QT}::Widgets ${ARG_LIBS})
  target_include_directories(${target} PRIVATE ${CMAKE_CURRENT_SOURCE_DIR})
  target_compile_definitions(${target} PRIVATE
    QT_UTIL_TEST_DATA_DIR="${CMAKE_CURRENT_SOURCE_DIR}/data")

  set(window_system)
  if(ARG_X11)
    set(window_system X11)
  elseif(ARG_WAYLAND)
    set(window_system WAYLAND)
    if(ARG_SEAT)
      list(APPEND window_system SEAT)
    endif()
  endif()
  qt_util_add_command_test(NAME ${ARG_NAME} ${window_system} ${timeout}
                           COMMAND $<TARGET_FILE:${target}> ENVIRONMENT ${ARG_ENVIRONMENT})
endfunction()

# qt_util_add_command_test(NAME <name> COMMAND <command> [<arg>...] [X11 | WAYLAND [SEAT]]
#                          [TIMEOUT <seconds>] [LABELS <label>...] [ENVIRONMENT <VAR=value>...])
#
# Registers a command with CTest in the tests' environment: on the offscreen platform, with X11
# under xvfb-run with the xcb platform (label "x11"), or with WAYLAND under scripts/weston-run, a
# headless weston of its own, on Qt's Wayland platform (label "wayland"; QT_UTIL_WESTON_SCALE in
# ctest's environment sets the compositor's output scale; SEAT runs it with a keyboard and
# pointer, see scripts/weston-run). ENVIRONMENT adds to that environment.
function(qt_util_add_command_test)
  cmake_parse_arguments(ARG "X11;WAYLAND;SEAT" "NAME;TIMEOUT" "COMMAND;LABELS;ENVIRONMENT" ${ARGN})
  if(NOT ARG_TIMEOUT AND ARG_WAYLAND)
    # Every Wayland test ends within seconds; a short limit keeps the cost of Qt 6.4's rare
    # deadlock at exit (see scripts/run-tests) small.
    set(ARG_TIMEOUT 60)
  elseif(NOT ARG_TIMEOUT)
    set(ARG_TIMEOUT 120)
  endif()
  set(labels ${ARG_LABELS})
  if(ARG_X11)
    add_test(NAME ${ARG_NAME} COMMAND xvfb-run -a -s "-screen 0 1280x1024x24" ${ARG_COMMAND})
    set(platform xcb)
    list(APPEND labels x11)
  elseif(ARG_WAYLAND)
    set(seat)
    if(ARG_SEAT)
      set(seat --seat)
    endif()
    add_test(NAME ${ARG_NAME} COMMAND ${PROJECT_SOURCE_DIR}/scripts/weston-run ${seat} ${ARG_COMMAND})
    set(platform wayland)
    list(APPEND labels wayland)
  else()
    add_test(NAME ${ARG_NAME} COMMAND ${ARG_COMMAND})
    set(platform ${QT_UTIL_TEST_OFFSCREEN})
  endif()
  if(labels)
    set_tests_properties(${ARG_NAME} PROPERTIES LABELS "${labels}")
  endif()
  set(environment ${QT_UTIL_TEST_ENVIRONMENT} "QT_QPA_PLATFORM=${platform}" ${ARG_ENVIRONMENT})
  if((ARG_X11 OR ARG_WAYLAND) AND QT_UTIL_SANITIZE)
    # The xcb and Wayland platforms need two relaxations that concern system libraries only:
    # libxkbcommon hands strndup a buffer that is not zero-terminated (legal, but strict string
    # checks flag it), and Qt's platform plugins allocate through libdbus and libwayland-client,
    # whose leak reports reach the suppressed plugin only with full unwinding.
    list(APPEND environment
      "ASAN_OPTIONS=detect_leaks=1:abort_on_error=0:strict_string_checks=0:fast_unwind_on_malloc=0")
  endif()
  set_tests_properties(${ARG_NAME} PROPERTIES TIMEOUT ${ARG_TIMEOUT} ENVIRONMENT "${environment}")
endfunction()

# qt_util_install_library(<target> BASE_DIR <dir> DESTINATION <dir under the header directory>
#                         HEADERS <absolute paths>...)
#
# Installs a shared library (component runtime, its unversioned .so link with component
# development) into the export set QtUtilTargets, and its public headers, keeping their paths
# relative to BASE_DIR under <QT_UTIL_INSTALL_INCLUDEDIR>/DESTINATION (component development).
function(qt_util_install_library target)
  cmake_parse_arguments(ARG "" "BASE_DIR;DESTINATION" "HEADERS" ${ARGN})
  install(TARGETS ${target} EXPORT QtUtilTargets
    LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT runtime NAMELINK_COMPONENT development)
  foreach(header IN LISTS ARG_HEADERS)
    file(RELATIVE_PATH relative "${ARG_BASE_DIR}" "${header}")
    get_filename_component(subdir "${relative}" DIRECTORY)
    install(FILES "${header}" DESTINATION "${QT_UTIL_INSTALL_INCLUDEDIR}/${ARG_DESTINATION}/${subdir}"
            COMPONENT development)
  endforeach()
endfunction()
