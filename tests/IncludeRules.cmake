# Checks who includes whom across the support code: nothing of the module, its libraries or
# minihost includes testing/, tests/, fuzz/ or bench/; testing/ itself includes only itself,
# strings/, path/, object/, host/ and minihost/host/; no test or benchmark includes fuzz/.
# It reads the quoted #include lines of the files; system includes are not checked.
# Usage: cmake -DSOURCE=<source tree> -P IncludeRules.cmake   (fails with every offending line)
if(NOT SOURCE)
  message(FATAL_ERROR "IncludeRules.cmake needs -DSOURCE=<source tree>")
endif()

set(_faults "")

# _check(FOLDERS <folders...> ALLOWED <regex> | FORBIDDEN <regex>): every quoted include of
# the C++ files under the folders must match ALLOWED, or must not match FORBIDDEN.
function(_check)
  cmake_parse_arguments(ARG "" "ALLOWED;FORBIDDEN" "FOLDERS" ${ARGN})
  foreach(folder ${ARG_FOLDERS})
    file(GLOB_RECURSE _files LIST_DIRECTORIES false
         ${SOURCE}/${folder}/*.h ${SOURCE}/${folder}/*.cpp ${SOURCE}/${folder}/*.def)
    foreach(_file ${_files})
      file(STRINGS ${_file} _lines REGEX "^[ \t]*#[ \t]*include[ \t]*\"")
      foreach(_line ${_lines})
        string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*\"([^\"]*)\".*" "\\1" _included "${_line}")
        set(_bad OFF)
        if(ARG_ALLOWED AND NOT _included MATCHES "${ARG_ALLOWED}")
          set(_bad ON)
        endif()
        if(ARG_FORBIDDEN AND _included MATCHES "${ARG_FORBIDDEN}")
          set(_bad ON)
        endif()
        if(_bad)
          file(RELATIVE_PATH _shown ${SOURCE} ${_file})
          list(APPEND _faults "${_shown} includes \"${_included}\"")
        endif()
      endforeach()
    endforeach()
  endforeach()
  set(_faults ${_faults} PARENT_SCOPE)
endfunction()

_check(FOLDERS module object host path strings minihost
       FORBIDDEN "^(testing|tests|fuzz|bench)/")
_check(FOLDERS testing
       ALLOWED "^(testing|strings|path|object|host|minihost/host)/")
_check(FOLDERS tests bench
       FORBIDDEN "^fuzz/")

if(_faults)
  list(JOIN _faults "\n  " _shown)
  message(FATAL_ERROR "include rules broken:\n  ${_shown}")
endif()
