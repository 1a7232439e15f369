# The module's exported names, read from its two lists (module/Texts.def and
# module/Entries.def) and written into the build tree, so that no other file keeps them:
#
#   generated/exports.map        the linker's version script: the 28 names global, all else
#                                local
#   generated/Binary.def         the same for Windows' linker: the module's EXPORTS
#   generated/ExportedNames.def  the same names for C++, in the order of the export list:
#                                TAVREL_EXPORTED_TEXT(name) for each fixed-text function,
#                                TAVREL_EXPORTED_DEFINITION(GetModuleDefinition), then
#                                TAVREL_EXPORTED_ENTRY(tavrel_module_<function>) for each
#                                script function, in the order of the definition text
#
# The interface target tavrel_exported_names puts the build tree's root on the include path,
# so that minihost, the tests and the fuzzers include "generated/ExportedNames.def".
# Configuring again after an edit of either list happens by itself.

set(_texts_list ${PROJECT_SOURCE_DIR}/module/Texts.def)
set(_entries_list ${PROJECT_SOURCE_DIR}/module/Entries.def)
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS ${_texts_list} ${_entries_list})

# The name that each line of file starting with "<macro>(" gives: the first group of pattern.
function(_tavrel_names_of file macro pattern out)
  file(STRINGS ${file} lines REGEX "^${macro}\\(")
  set(names "")
  foreach(line IN LISTS lines)
    if(NOT line MATCHES "^${macro}\\(${pattern}\\)$")
      message(FATAL_ERROR "${file}: cannot read the line '${line}'")
    endif()
    list(APPEND names "${CMAKE_MATCH_1}")
  endforeach()
  set(${out} ${names} PARENT_SCOPE)
endfunction()

_tavrel_names_of(${_texts_list} TAVREL_TEXT "([A-Za-z_0-9]+), *\"[^\"]*\"" TAVREL_TEXT_FUNCTIONS)
_tavrel_names_of(${_entries_list} TAVREL_ENTRY
                 "[0-9]+, *[A-Z_]+, *\"[^\"]+\", *([A-Za-z_0-9]+)" _entry_functions)
set(TAVREL_ENTRY_NAMES "")
foreach(function IN LISTS _entry_functions)
  list(APPEND TAVREL_ENTRY_NAMES "tavrel_module_${function}")
endforeach()
set(TAVREL_EXPORTED_NAMES ${TAVREL_TEXT_FUNCTIONS} GetModuleDefinition ${TAVREL_ENTRY_NAMES})

set(_map "{\n  global:\n")
set(_windows_def "LIBRARY Binary\nEXPORTS\n")
set(_def "// Generated from module/Texts.def and module/Entries.def by cmake/ModuleExports.cmake.\n")
foreach(name IN LISTS TAVREL_TEXT_FUNCTIONS)
  string(APPEND _def "TAVREL_EXPORTED_TEXT(${name})\n")
endforeach()
string(APPEND _def "TAVREL_EXPORTED_DEFINITION(GetModuleDefinition)\n")
foreach(name IN LISTS TAVREL_ENTRY_NAMES)
  string(APPEND _def "TAVREL_EXPORTED_ENTRY(${name})\n")
endforeach()
foreach(name IN LISTS TAVREL_EXPORTED_NAMES)
  string(APPEND _map "    ${name};\n")
  string(APPEND _windows_def "    ${name}\n")
endforeach()
string(APPEND _map "  local: *;\n};\n")

set(TAVREL_EXPORTS_MAP ${PROJECT_BINARY_DIR}/generated/exports.map)
file(CONFIGURE OUTPUT ${TAVREL_EXPORTS_MAP} CONTENT "${_map}")
set(TAVREL_EXPORTS_DEF ${PROJECT_BINARY_DIR}/generated/Binary.def)
file(CONFIGURE OUTPUT ${TAVREL_EXPORTS_DEF} CONTENT "${_windows_def}")
file(CONFIGURE OUTPUT ${PROJECT_BINARY_DIR}/generated/ExportedNames.def CONTENT "${_def}")

add_library(tavrel_exported_names INTERFACE)
target_include_directories(tavrel_exported_names INTERFACE ${PROJECT_BINARY_DIR})
