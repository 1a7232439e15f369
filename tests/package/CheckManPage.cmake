# Checks the manual page doc/minihost.1:
#   - man formats it without a warning (man --warnings, every kind);
#   - its title line names the project's version;
#   - with -DMINIHOST=<program>: it describes exactly the long options that minihost --help
#     describes, so that neither falls behind the other.
#   cmake -DMAN=<man> -DPAGE=<page> -DVERSION=<x.y.z.w> [-DMINIHOST=<program>] -P CheckManPage.cmake
cmake_minimum_required(VERSION 3.25)
foreach(required MAN PAGE VERSION)
  if(NOT DEFINED ${required})
    message(FATAL_ERROR "CheckManPage.cmake needs -D${required}=...")
  endif()
endforeach()

set(ENV{MANWIDTH} 80)
set(ENV{LC_ALL} C.UTF-8)
execute_process(COMMAND ${MAN} --warnings=w -E UTF-8 -l ${PAGE}
                RESULT_VARIABLE status OUTPUT_VARIABLE page ERROR_VARIABLE warnings)
if(NOT status EQUAL 0 OR NOT warnings STREQUAL "")
  message(FATAL_ERROR "man --warnings on ${PAGE} (status ${status}):\n${warnings}")
endif()

file(STRINGS ${PAGE} title REGEX "^\\.TH ")
if(NOT title MATCHES "\"Binary ${VERSION}\"")
  message(FATAL_ERROR "${PAGE}: the title line '${title}' does not name Binary ${VERSION}")
endif()

# The long options a text names, sorted and without repeats.
function(long_options text out)
  string(REGEX MATCHALL "--[a-z][a-z-]*" options "${text}")
  list(REMOVE_DUPLICATES options)
  list(SORT options)
  set(${out} "${options}" PARENT_SCOPE)
endfunction()

if(DEFINED MINIHOST)
  execute_process(COMMAND ${MINIHOST} --help RESULT_VARIABLE status OUTPUT_VARIABLE help)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "minihost --help failed (${status})")
  endif()
  long_options("${help}" from_help)
  long_options("${page}" from_page)
  if(NOT from_help STREQUAL from_page)
    message(FATAL_ERROR "minihost --help names the options ${from_help}, "
                        "but the manual page names ${from_page}")
  endif()
  message(STATUS "the manual page and minihost --help name the same options: ${from_page}")
endif()
message(STATUS "${PAGE}: formatted without warnings")
