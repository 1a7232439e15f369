# Installs the build tree into a fresh prefix and uses it as its users do:
#   1. `cmake --install` into <WORK>/prefix; the files must be those of installed-files.txt;
#   2. nothing installed for CMake or pkg-config names the source or the build tree;
#   3. the separate project consumer/ finds the package with find_package(TavrelBinary CONFIG),
#      is built against it and run;
#   4. the same program is built with the flags that pkg-config gives for tavrel-binary, and
#      run (when pkg-config is there; otherwise this step says it is skipped);
#   5. the installed minihost, started from another directory with no option, finds the
#      installed module and runs a statement with it.
#
#   cmake -DBUILD_DIR=<build> -DSOURCE_DIR=<source> -DWORK=<scratch dir> -DVERSION=<x.y.z.w>
#         -DGENERATOR=<generator> [-DMAKE_PROGRAM=<program>] -DCXX=<compiler>
#         [-DCXX_FLAGS=<flags>] [-DLINKER_FLAGS=<flags>] [-DBUILD_TYPE=<type>]
#         [-DPKG_CONFIG=<program>] -P RunPackageTest.cmake
cmake_minimum_required(VERSION 3.25)
include(${CMAKE_CURRENT_LIST_DIR}/CheckInstalledFiles.cmake)

foreach(required BUILD_DIR SOURCE_DIR WORK VERSION GENERATOR CXX)
  if(NOT DEFINED ${required})
    message(FATAL_ERROR "RunPackageTest.cmake needs -D${required}=...")
  endif()
endforeach()

# Runs a command in WORK; fails with its output when it fails.
function(run what)
  execute_process(COMMAND ${ARGN} WORKING_DIRECTORY ${WORK}
                  RESULT_VARIABLE status OUTPUT_VARIABLE output ERROR_VARIABLE output)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "${what} failed (${status}):\n${output}")
  endif()
  set(run_output "${output}" PARENT_SCOPE)
endfunction()

set(prefix ${WORK}/prefix)
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})

# 1. The installation.
run("cmake --install" ${CMAKE_COMMAND} --install ${BUILD_DIR} --prefix ${prefix})
file(GLOB_RECURSE installed LIST_DIRECTORIES false RELATIVE ${prefix} ${prefix}/*)
tavrel_check_installed_files("${installed}" "runtime;dev" errors)
if(errors)
  list(JOIN errors "\n  " text)
  message(FATAL_ERROR "the installation in ${prefix} is not what installed-files.txt lists:\n  ${text}")
endif()
message(STATUS "installed as installed-files.txt lists")

# 2. Relocatable: the package descriptions name paths relative to themselves only.
file(GLOB descriptions ${prefix}/lib/cmake/TavrelBinary/*.cmake ${prefix}/lib/pkgconfig/*.pc)
foreach(description IN LISTS descriptions)
  file(READ ${description} text)
  foreach(tree ${SOURCE_DIR} ${BUILD_DIR})
    string(FIND "${text}" "${tree}" at)
    if(NOT at EQUAL -1)
      message(FATAL_ERROR "${description} names ${tree}")
    endif()
  endforeach()
endforeach()

# 3. find_package from a separate project.
set(flags "-DCMAKE_CXX_FLAGS=${CXX_FLAGS}" "-DCMAKE_EXE_LINKER_FLAGS=${LINKER_FLAGS}")
if(MAKE_PROGRAM)
  list(APPEND flags -DCMAKE_MAKE_PROGRAM=${MAKE_PROGRAM})
endif()
if(BUILD_TYPE)
  list(APPEND flags -DCMAKE_BUILD_TYPE=${BUILD_TYPE})
endif()
run("configuring the consumer project"
    ${CMAKE_COMMAND} -S ${CMAKE_CURRENT_LIST_DIR}/consumer -B ${WORK}/consumer -G ${GENERATOR}
    -DCMAKE_CXX_COMPILER=${CXX} -DCMAKE_PREFIX_PATH=${prefix} -DEXPECTED_VERSION=${VERSION}
    ${flags})
run("building the consumer project" ${CMAKE_COMMAND} --build ${WORK}/consumer)
run("the consumer program" ${WORK}/consumer/consumer)
message(STATUS "find_package(TavrelBinary): built and ran\n${run_output}")

# 4. pkg-config.
if(PKG_CONFIG)
  set(ENV{PKG_CONFIG_PATH} ${prefix}/lib/pkgconfig)
  run("pkg-config" ${PKG_CONFIG} --cflags --libs tavrel-binary)
  string(STRIP "${run_output}" pkg_flags)
  separate_arguments(pkg_flags UNIX_COMMAND "${pkg_flags}")
  separate_arguments(extra UNIX_COMMAND "${CXX_FLAGS} ${LINKER_FLAGS}")
  run("building with pkg-config's flags"
      ${CXX} ${extra} ${CMAKE_CURRENT_LIST_DIR}/consumer/main.cpp -o ${WORK}/consumer-pc
      ${pkg_flags})
  run("the program built with pkg-config's flags" ${WORK}/consumer-pc)
  message(STATUS "pkg-config tavrel-binary: built and ran")
else()
  message(STATUS "pkg-config tavrel-binary: skipped, pkg-config was not found")
endif()

# 5. The installed program finds the installed module by itself (WORK holds no module).
run("the installed minihost" ${prefix}/bin/minihost -e "print Size(ToDataRef(\"four\"))")
if(NOT run_output STREQUAL "4\n")
  message(FATAL_ERROR "the installed minihost printed '${run_output}', expected 4")
endif()
message(STATUS "the installed minihost found ${prefix}/lib/tavrel/modules/Binary.so")
