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
if(TAVREL_BUILD_TESTS)
  tavrel_require_package(GTest libgtest-dev)
endif()
if(TAVREL_BUILD_BENCH)
  tavrel_require_package(benchmark libbenchmark-dev)
endif()
