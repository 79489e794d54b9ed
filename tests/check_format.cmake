# Fails when a C++ file of the repository differs from what .clang-format makes of it.
find_program(CLANG_FORMAT clang-format REQUIRED)
set(files)
foreach(dir base framework qt_util tests bench examples fuzz)
  file(GLOB_RECURSE found "${SOURCE_DIR}/${dir}/*.cpp" "${SOURCE_DIR}/${dir}/*.h")
  list(APPEND files ${found})
endforeach()
execute_process(COMMAND ${CLANG_FORMAT} --dry-run -Werror ${files}
                RESULT_VARIABLE rc ERROR_VARIABLE errors)
if(NOT rc EQUAL 0)
  message(FATAL_ERROR "clang-format would change these files (run clang-format -i):\n${errors}")
endif()
list(LENGTH files count)
message(STATUS "${count} files formatted")
