# Fails when a header under qt_util/ or framework/include/ is neither private (*_p.h) nor in the
# installed-header lists, so that a new public header cannot be left out of the packages, the
# ABI check and the API reference by accident; also when a listed header no longer exists.
#   -DSOURCE_DIR=<repository root> -DHEADERS_FILE=<installed paths, one per line>
cmake_minimum_required(VERSION 3.25)
file(STRINGS "${HEADERS_FILE}" listed)
file(GLOB_RECURSE qt_util_headers RELATIVE "${SOURCE_DIR}" "${SOURCE_DIR}/qt_util/*.h")
file(GLOB_RECURSE framework_headers RELATIVE "${SOURCE_DIR}/framework/include"
     "${SOURCE_DIR}/framework/include/*.h")
set(problems)
foreach(header IN LISTS qt_util_headers framework_headers)
  if(NOT header MATCHES "_p\\.h$" AND NOT header IN_LIST listed)
    list(APPEND problems "not listed: ${header}")
  endif()
endforeach()
foreach(header IN LISTS listed)
  if(NOT header IN_LIST qt_util_headers AND NOT header IN_LIST framework_headers
     AND NOT EXISTS "${SOURCE_DIR}/${header}" AND NOT header STREQUAL "qt_util/version_config.h")
    list(APPEND problems "listed but missing: ${header}")
  endif()
endforeach()
if(problems)
  list(JOIN problems "\n  " text)
  message(FATAL_ERROR "Installed-header lists out of date:\n  ${text}\n"
    "Add public headers to QT_UTIL_PUBLIC_HEADERS (qt_util/CMakeLists.txt) or "
    "TALVEX_FRAMEWORK_PUBLIC_HEADERS (framework/CMakeLists.txt); name private ones *_p.h.")
endif()
list(LENGTH listed count)
message(STATUS "${count} installed headers, all listed")
