# Third-party packages come from Debian; nothing is downloaded at build time.
# Each failure names the package that provides what is missing.
function(tavrel_require_package name debian_package)
  find_package(${name} ${ARGN} QUIET)
  if(NOT ${name}_FOUND)
    message(FATAL_ERROR
      "${name} was not found. Install it with: apt-get install ${debian_package}")
  endif()
endfunction()

find_package(Threads REQUIRED)
if(TAVREL_BUILD_TESTS AND CMAKE_CROSSCOMPILING)
  # GoogleTest for the target system, built from Debian's sources of it.
  set(_gtest_sources /usr/src/googletest)
  if(NOT EXISTS ${_gtest_sources}/CMakeLists.txt)
    message(FATAL_ERROR "GoogleTest's sources were not found. Install them with: apt-get install googletest")
  endif()
  set(BUILD_GMOCK OFF CACHE BOOL "GoogleMock is not used" FORCE)
  set(INSTALL_GTEST OFF CACHE BOOL "GoogleTest is not installed with the project" FORCE)
  add_subdirectory(${_gtest_sources} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
  foreach(_gtest gtest gtest_main)
    target_compile_options(${_gtest} PRIVATE -w)  # its code, not ours: no warnings, no -Werror
    if(NOT TARGET GTest::${_gtest})
      add_library(GTest::${_gtest} ALIAS ${_gtest})
    endif()
  endforeach()
elseif(TAVREL_BUILD_TESTS)
  tavrel_require_package(GTest libgtest-dev)
endif()
if(TAVREL_BUILD_BENCH)
  tavrel_require_package(benchmark libbenchmark-dev)
endif()
