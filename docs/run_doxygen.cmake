# Runs Doxygen and fails on any warning it writes, listing them.
#   -DDOXYGEN=<doxygen> -DDOXYFILE=<configured Doxyfile> -DOUTPUT=<its output directory>
file(REMOVE_RECURSE "${OUTPUT}/html")
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
message(STATUS "API reference without warnings: ${OUTPUT}/html/index.html")
