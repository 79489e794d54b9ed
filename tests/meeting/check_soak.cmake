# Plays the meeting scenario ROUNDS times in one process and reads its figures: from round
# WARM_UP on, the live objects and the library's registries (pending deletes, observers,
# monitor widgets), once each round's window is gone and while its meeting ran (objects,
# observers, monitor widgets: "meeting" below), must stay exactly where they were, and the
# resident memory may grow by no more than MAX_GROWTH_KIB per round on average. The allowance
# is for the allocator, whose pools still settle after the first rounds (docs/soak.md); a leak
# of one window per round is several hundred KiB. MORE_KEYS names figures a harness appends to
# the line (the test tree's count of every live QObject, "qobjects"); they must stay put from
# round WARM_UP on as well.
if(NOT DEFINED MAX_GROWTH_KIB)
  set(MAX_GROWTH_KIB 32)
endif()
include(${CMAKE_CURRENT_LIST_DIR}/../consumer/run_command.cmake)
run("${PROGRAM}" --script --repeat ${ROUNDS} --out "${OUT_DIR}")

string(REGEX MATCHALL "round [0-9]+: [^\n]*" lines "${LAST_OUTPUT}")
list(LENGTH lines count)
if(NOT count EQUAL ROUNDS)
  message(FATAL_ERROR "expected ${ROUNDS} round lines, got ${count}:\n${LAST_OUTPUT}")
endif()

function(figures round prefix)
  math(EXPR index "${round} - 1")
  list(GET lines ${index} line)
  message(STATUS "${line}")
  foreach(key rss_kib objects pending_deletes observers monitor_widgets mismatches ${MORE_KEYS})
    if(NOT line MATCHES " ${key}=([0-9]+)")
      message(FATAL_ERROR "no ${key} in: ${line}")
    endif()
    set(${prefix}_${key} ${CMAKE_MATCH_1} PARENT_SCOPE)
  endforeach()
  if(NOT line MATCHES "in the meeting: objects=([0-9]+) observers=([0-9]+) monitor_widgets=([0-9]+)")
    message(FATAL_ERROR "no in-meeting figures in: ${line}")
  endif()
  set(${prefix}_meeting "${CMAKE_MATCH_1}/${CMAKE_MATCH_2}/${CMAKE_MATCH_3}" PARENT_SCOPE)
endfunction()

figures(${WARM_UP} warm)
figures(${ROUNDS} last)
foreach(key objects pending_deletes observers monitor_widgets meeting ${MORE_KEYS})
  if(NOT warm_${key} EQUAL last_${key})
    message(FATAL_ERROR
            "${key} grew from ${warm_${key}} (round ${WARM_UP}) to ${last_${key}} (round ${ROUNDS})")
  endif()
endforeach()
foreach(line IN LISTS lines)
  if(NOT line MATCHES " mismatches=0,")
    message(FATAL_ERROR "a round had mismatches: ${line}")
  endif()
endforeach()
math(EXPR growth "${last_rss_kib} - ${warm_rss_kib}")
math(EXPR allowed "${MAX_GROWTH_KIB} * (${ROUNDS} - ${WARM_UP})")
if(growth GREATER allowed)
  message(FATAL_ERROR "resident memory grew by ${growth} KiB from round ${WARM_UP} to round "
                      "${ROUNDS}, more than ${allowed} KiB")
endif()
message(STATUS "soak: ${ROUNDS} rounds; after round ${WARM_UP} the objects and registries "
               "stayed put and resident memory grew by ${growth} KiB (allowed ${allowed})")
