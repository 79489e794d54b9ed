# Runs Doxygen and fails on any warning it writes, listing them. Each header must carry a
# "/// @file" comment: without one Doxygen checks its classes but silently skips its free
# functions, constants, enums and macros.
#   -DDOXYGEN=<doxygen> -DDOXYFILE=<configured Doxyfile> -DOUTPUT=<its output directory>
#   -DHEADERS_FILE=<the headers it reads, one per line>
cmake_minimum_required(VERSION 3.25)
file(STRINGS "${HEADERS_FILE}" headers)
set(missing)
foreach(header IN LISTS headers)
  file(STRINGS "${header}" file_doc REGEX "^/// @file$")
  if(NOT file_doc)
    list(APPEND missing "${header}")
  endif()
endforeach()
if(missing)
  list(JOIN missing "\n  " text)
  message(FATAL_ERROR "Public headers without a \"/// @file\" comment (put it after "
    "#pragma once, with one line saying what the header holds):\n  ${text}")
endif()

file(REMOVE_RECURSE "${OUTPUT}/html" "${OUTPUT}/qt_util.qch")
file(MAKE_DIRECTORY "${OUTPUT}")
execute_process(COMMAND "${DOXYGEN}" "${DOXYFILE}" RESULT_VARIABLE rc)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "doxygen failed (${rc})")
endif()
file(READ "${OUTPUT}/warnings.log" warnings)
if(NOT warnings STREQUAL "")
  message(FATAL_ERROR "Doxygen warnings over the public headers (each public class, function, "
    "member, enum value and macro needs a /// comment):\n${warnings}")
endif()
file(STRINGS "${DOXYFILE}" qhp REGEX "^GENERATE_QHP += YES")
if(qhp AND NOT EXISTS "${OUTPUT}/qt_util.qch")
  message(FATAL_ERROR "qhelpgenerator made no ${OUTPUT}/qt_util.qch")
endif()
message(STATUS "API reference without warnings: ${OUTPUT}/html/index.html")
