# Runs one script case through minihost and compares its standard output, standard error and
# exit status with <case>.out, .err and .status. The command line is "minihost <case>.tvl", or
# the lines of <case>.args; standard input is <case>.in, else empty. It runs in the cases
# directory, so messages name files as the case wrote them.
#   cmake -DMINIHOST=<program> -DCASES=<dir> -DCASE=<name> -DWORK=<dir> [-DUPDATE=ON] -P RunScript.cmake
# UPDATE=ON writes what the program gave into the expected files (then read the diff).
# EMULATOR runs minihost through it (wine); PLATFORM (linux, windows) prefers
# <case>.<platform>.<stream> where that file exists, for the system's own words. FAKE_FULL
# stands for @FAKE_FULL@ in the arguments; it and the real path of MODULE (on Windows also as
# Z:\...) are written back as @FAKE_FULL@ and @MODULE@ in what the program gave.
cmake_policy(SET CMP0053 NEW)  # "@FAKE_FULL@" stays text, not a variable

set(base ${CASES}/${CASE})
set(arguments ${CASE}.tvl)
if(EXISTS ${base}.args)
  file(STRINGS ${base}.args arguments)
endif()
# NOTE: an empty file of our own, not /dev/null: some containers make /dev/null a regular file
# that collects whatever was written to it.
set(input ${WORK}/${CASE}.empty.in)
file(WRITE ${input} "")
if(EXISTS ${base}.in)
  set(input ${base}.in)
endif()
set(spellings "")
if(DEFINED FAKE_FULL)
  list(TRANSFORM arguments REPLACE "@FAKE_FULL@" "${FAKE_FULL}")
  list(APPEND spellings "${FAKE_FULL}=FAKE_FULL")
endif()
if(DEFINED MODULE)
  file(REAL_PATH "${MODULE}" module_real)
  string(REPLACE "/" "\\" module_windows "Z:${module_real}")
  list(APPEND spellings "${module_real}=MODULE" "${module_windows}=MODULE")
endif()

execute_process(COMMAND ${EMULATOR} ${MINIHOST} ${arguments}
  WORKING_DIRECTORY ${CASES}
  INPUT_FILE ${input}
  OUTPUT_VARIABLE actual_out
  ERROR_VARIABLE actual_err
  RESULT_VARIABLE actual_status)
set(actual_status "${actual_status}\n")
foreach(spelling ${spellings})
  string(REGEX REPLACE "=[A-Z_]+$" "" path "${spelling}")
  string(REGEX REPLACE "^.*=" "" placeholder "${spelling}")
  string(REPLACE "${path}" "@${placeholder}@" actual_out "${actual_out}")
  string(REPLACE "${path}" "@${placeholder}@" actual_err "${actual_err}")
endforeach()

set(failed FALSE)
foreach(stream out err status)
  set(expected_file ${base}.${stream})
  if(PLATFORM AND EXISTS ${base}.${PLATFORM}.${stream})
    set(expected_file ${base}.${PLATFORM}.${stream})
  endif()
  set(actual_file ${WORK}/${CASE}.${stream}.actual)
  file(WRITE ${actual_file} "${actual_${stream}}")
  if(UPDATE)
    file(WRITE ${expected_file} "${actual_${stream}}")
    continue()
  endif()
  set(expected "")
  if(EXISTS ${expected_file})
    file(READ ${expected_file} expected)
  endif()
  if(NOT expected STREQUAL actual_${stream})
    set(failed TRUE)
    message("${CASE}: ${stream} differs from ${expected_file}:")
    execute_process(COMMAND diff -u ${expected_file} ${actual_file} RESULT_VARIABLE diff_status)
    if(diff_status GREATER 1)
      message("expected:\n${expected}\nactual:\n${actual_${stream}}")
    endif()
  endif()
endforeach()
if(failed)
  message(FATAL_ERROR "${CASE}: minihost did not give the expected results")
endif()
