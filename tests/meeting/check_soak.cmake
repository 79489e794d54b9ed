# Plays the meeting scenario ROUNDS times in one process and reads its line of figures per
# round. From round WARM_UP to the last round:
# - the live objects and the library's registries (pending deletes, observers, monitor widgets),
#   once the round's window is gone and in the meeting itself, and the figures a harness adds
#   (MORE_KEYS: the test tree's count of every live QObject, "qobjects"), stay exactly put;
# - the heap in use grows by no more than MAX_HEAP_GROWTH_KIB per round on average. The program
#   runs with glibc's per-thread caches off (GLIBC_TUNABLES, set by the test): glibc counts the
#   chunks they hold as in use, and they fill for some dozens of rounds (docs/soak.md). Without
#   them, as with the sanitizer's allocator, the figure does not move by a KiB from the first
#   round on, so the bound of a KiB a round is all allowance for Qt's caches on other machines;
# - the resident memory grows by no more than MAX_RSS_GROWTH_KIB per round on average, unless
#   CHECK_RSS is OFF: AddressSanitizer keeps freed memory resident in its quarantine (hundreds
#   of MiB) by design, so sanitizer builds rely on the heap figure, which leaves it out.
# No round may have a mismatch.
cmake_minimum_required(VERSION 3.25)
if(NOT DEFINED MAX_HEAP_GROWTH_KIB)
  set(MAX_HEAP_GROWTH_KIB 1)
endif()
if(NOT DEFINED MAX_RSS_GROWTH_KIB)
  set(MAX_RSS_GROWTH_KIB 32)
endif()
if(NOT DEFINED CHECK_RSS)
  set(CHECK_RSS ON)
endif()
include(${CMAKE_CURRENT_LIST_DIR}/../consumer/run_command.cmake)
run("${PROGRAM}" --script --repeat ${ROUNDS} --out "${OUT_DIR}")

string(REGEX MATCHALL "round [0-9]+: [^\n]*" lines "${LAST_OUTPUT}")
list(LENGTH lines count)
if(NOT count EQUAL ROUNDS)
  message(FATAL_ERROR "expected ${ROUNDS} round lines, got ${count}:\n${LAST_OUTPUT}")
endif()
foreach(line IN LISTS lines)
  if(NOT line MATCHES " mismatches=0[ ,]")
    message(FATAL_ERROR "a round had mismatches: ${line}")
  endif()
endforeach()

set(after_keys rss_kib heap_kib objects pending_deletes observers monitor_widgets ${MORE_KEYS})
set(meeting_keys objects observers monitor_widgets)
set(compared_keys objects pending_deletes observers monitor_widgets ${MORE_KEYS}
    meeting_objects meeting_observers meeting_monitor_widgets)

# Sets <prefix>_<key> for every figure of the round's line; the figures of the meeting itself,
# after ", in the meeting:", as <prefix>_meeting_<key>.
function(figures round prefix)
  math(EXPR index "${round} - 1")
  list(GET lines ${index} line)
  message(STATUS "${line}")
  if(NOT line MATCHES "^(.*), in the meeting:(.*)$")
    message(FATAL_ERROR "no in-meeting figures in: ${line}")
  endif()
  set(after "${CMAKE_MATCH_1}")
  set(meeting "${CMAKE_MATCH_2}")
  foreach(part after meeting)
    set(name_prefix "")
    if(part STREQUAL "meeting")
      set(name_prefix "meeting_")
    endif()
    foreach(key IN LISTS ${part}_keys)
      if(NOT "${${part}}" MATCHES " ${key}=([0-9]+)")
        message(FATAL_ERROR "no ${key} in the ${part} figures of: ${line}")
      endif()
      set(${prefix}_${name_prefix}${key} ${CMAKE_MATCH_1} PARENT_SCOPE)
    endforeach()
  endforeach()
endfunction()

figures(${WARM_UP} warm)
figures(${ROUNDS} last)
foreach(key IN LISTS compared_keys)
  if(NOT warm_${key} EQUAL last_${key})
    message(FATAL_ERROR
            "${key} went from ${warm_${key}} (round ${WARM_UP}) to ${last_${key}} (round ${ROUNDS})")
  endif()
endforeach()

# Average growth per round from WARM_UP on, against its bound.
function(check_growth key what bound)
  math(EXPR growth "${last_${key}} - ${warm_${key}}")
  math(EXPR allowed "${bound} * (${ROUNDS} - ${WARM_UP})")
  if(growth GREATER allowed)
    message(FATAL_ERROR "${what} grew by ${growth} KiB from round ${WARM_UP} to round "
                        "${ROUNDS}, more than ${allowed} KiB")
  endif()
  message(STATUS "${what}: ${growth} KiB from round ${WARM_UP} on (allowed ${allowed})")
endfunction()
check_growth(heap_kib "heap in use" ${MAX_HEAP_GROWTH_KIB})
if(CHECK_RSS)
  check_growth(rss_kib "resident memory" ${MAX_RSS_GROWTH_KIB})
endif()
message(STATUS "soak: ${ROUNDS} rounds; from round ${WARM_UP} on the objects and registries "
               "stayed put")
