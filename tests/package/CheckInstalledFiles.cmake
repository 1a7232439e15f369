# Compares a list of installed files with installed-files.txt: every file must match a line of
# the components asked for, and every such line must match a file.
#
# As a module: include() it, then tavrel_check_installed_files(FILES COMPONENTS ERRORS_VAR),
# with FILES relative to the prefix; ERRORS_VAR receives one message per fault (empty: none).
# As a script, on the listing of a Debian package (`dpkg-deb -c`):
#   cmake -DLISTING=<file> -DCOMPONENTS=runtime -P tests/package/CheckInstalledFiles.cmake
# takes the regular files under ./usr/ from the listing and fails with the faults it finds.

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  cmake_minimum_required(VERSION 3.25)
endif()

set(_tavrel_installed_files_list ${CMAKE_CURRENT_LIST_DIR}/installed-files.txt)

function(tavrel_check_installed_files files components errors_var)
  file(STRINGS ${_tavrel_installed_files_list} lines REGEX "^[a-z]+ ")
  set(globs "")
  foreach(line IN LISTS lines)
    string(REGEX MATCH "^([a-z]+) (.+)$" _ "${line}")
    if(CMAKE_MATCH_1 IN_LIST components)
      list(APPEND globs "${CMAKE_MATCH_2}")
    endif()
  endforeach()

  set(errors "")
  set(matched "")
  foreach(path IN LISTS files)
    set(found FALSE)
    foreach(glob IN LISTS globs)
      # The glob as an anchored regular expression; paths hold no other special character.
      string(REPLACE "." "\\." regex "${glob}")
      string(REPLACE "+" "\\+" regex "${regex}")
      string(REPLACE "*" "[^/]*" regex "${regex}")
      if(path MATCHES "^${regex}$")
        set(found TRUE)
        list(APPEND matched "${glob}")
      endif()
    endforeach()
    if(NOT found)
      list(APPEND errors "installed, but not in installed-files.txt: ${path}")
    endif()
  endforeach()
  foreach(glob IN LISTS globs)
    if(NOT glob IN_LIST matched)
      list(APPEND errors "missing: ${glob}")
    endif()
  endforeach()
  set(${errors_var} "${errors}" PARENT_SCOPE)
endfunction()

if(CMAKE_SCRIPT_MODE_FILE STREQUAL CMAKE_CURRENT_LIST_FILE)
  if(NOT DEFINED LISTING OR NOT DEFINED COMPONENTS)
    message(FATAL_ERROR "CheckInstalledFiles.cmake needs -DLISTING=<file> -DCOMPONENTS=<names>")
  endif()
  # A line of `dpkg-deb -c`: mode, owner, size, date, time, name; a regular file's mode
  # begins with '-'.
  file(STRINGS ${LISTING} listing)
  set(files "")
  foreach(line IN LISTS listing)
    if(line MATCHES "^-[^ ]* .* \\./usr/([^ ]+)$")
      list(APPEND files "${CMAKE_MATCH_1}")
    elseif(NOT line MATCHES "^d")
      message(FATAL_ERROR "not a directory or a regular file: ${line}")
    endif()
  endforeach()
  string(REPLACE "," ";" COMPONENTS "${COMPONENTS}")
  tavrel_check_installed_files("${files}" "${COMPONENTS}" errors)
  if(errors)
    list(JOIN errors "\n  " text)
    message(FATAL_ERROR "${LISTING}:\n  ${text}")
  endif()
  list(LENGTH files count)
  message(STATUS "${LISTING}: ${count} files, as installed-files.txt lists them")
endif()
