# Compiler flags shared by every target: warnings, and the sanitizers a preset asks for.
add_compile_options(-Wall -Wextra -Wpedantic)
# NOTE: the environment is read at every configure, not only the first: a build folder made
# outside CI and reused in CI (or the other way round) follows the CI variable of today's run.
if(TAVREL_WERROR OR "$ENV{CI}")
  if(NOT TAVREL_WERROR)
    message(STATUS "Warnings are errors: the environment sets CI")
  endif()
  add_compile_options(-Werror)
endif()

# On Windows every program and the module carry their C++ runtime, so that they need no DLL
# beyond Windows' own and load from any folder.
if(WIN32)
  add_link_options(-static)
endif()

if(TAVREL_SANITIZE)
  set(_san_flags -fsanitize=${TAVREL_SANITIZE} -fno-omit-frame-pointer)
  if(TAVREL_SANITIZE MATCHES "undefined")
    list(APPEND _san_flags -fsanitize=float-cast-overflow -fno-sanitize-recover=all)
  endif()
  add_compile_options(${_san_flags})
  add_link_options(${_san_flags})
endif()
