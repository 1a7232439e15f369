# Runs one script case through minihost and compares its standard output, standard error and
# exit status with the files beside it: <case>.out, <case>.err, <case>.status. The command
# line is "minihost <case>.tvl", or the lines of <case>.args (one argument per line) when that
# file exists; standard input is <case>.in when it exists, else empty. The program runs in the
# cases directory, so messages name files as the case wrote them.
#   cmake -DMINIHOST=<program> -DCASES=<dir> -DCASE=<name> -DWORK=<dir> -P RunScript.cmake
# -DEMULATOR=<program> runs minihost through it (wine, when cross-compiling for Windows).
# -DPLATFORM=<name> (linux, windows) prefers <case>.<name>.out (.err, .status) to <case>.out
# where that file exists: for text that the system gives, such as the loader's words.
# -DFAKE_PARTIAL=<path> and -DFAKE_FULL=<path> stand for @FAKE_PARTIAL@ and @FAKE_FULL@ in the
# arguments, and the paths are written back as those names in what the program gave.
# -DMODULE=<path> names the module that minihost finds by itself; its real path (and on Windows
# that path as the system spells it there, Z:\...) is written back as @MODULE@.
# With -DUPDATE=ON it writes what the program gave into the expected files instead.
foreach(required MINIHOST CASES CASE WORK)
  if(NOT DEFINED ${required})
    message(FATAL_ERROR "RunScript.cmake needs -D${required}=...")
  endif()
endforeach()

set(base ${CASES}/${CASE})
if(EXISTS ${base}.args)
  file(STRINGS ${base}.args arguments)
else()
  set(arguments ${CASE}.tvl)
endif()
foreach(placeholder FAKE_PARTIAL FAKE_FULL)
  if(DEFINED ${placeholder})
    list(TRANSFORM arguments REPLACE "@${placeholder}@" "${${placeholder}}")
  endif()
endforeach()
# NOTE: an empty file of our own, not /dev/null: some containers make /dev/null a regular file
# that collects whatever was written to it.
set(input ${WORK}/${CASE}.empty.in)
file(WRITE ${input} "")
if(EXISTS ${base}.in)
  set(input ${base}.in)
endif()

execute_process(COMMAND ${EMULATOR} ${MINIHOST} ${arguments}
  WORKING_DIRECTORY ${CASES}
  INPUT_FILE ${input}
  OUTPUT_VARIABLE actual_out
  ERROR_VARIABLE actual_err
  RESULT_VARIABLE actual_status)
set(actual_status "${actual_status}\n")
set(spellings "")
foreach(placeholder FAKE_PARTIAL FAKE_FULL)
  if(DEFINED ${placeholder})
    list(APPEND spellings "${${placeholder}}=${placeholder}")
  endif()
endforeach()
if(DEFINED MODULE)
  file(REAL_PATH "${MODULE}" module_real)
  list(APPEND spellings "${module_real}=MODULE")
  if(PLATFORM STREQUAL "windows")
    string(REPLACE "/" "\\" module_windows "Z:${module_real}")
    list(APPEND spellings "${module_windows}=MODULE")
  endif()
endif()
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
