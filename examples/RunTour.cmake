# Runs one script through minihost with the terminal as its output, and fails only when the
# script fails to run: exit status 0 (clean) and 1 (error reports, as the tour makes on
# purpose) both pass. Usage: cmake -DMINIHOST=<program> -DSCRIPT=<file> -P RunTour.cmake
# -DEMULATOR=<program> runs minihost through it (wine, when cross-compiling for Windows).
if(NOT MINIHOST OR NOT SCRIPT)
  message(FATAL_ERROR "RunTour.cmake needs -DMINIHOST=<program> and -DSCRIPT=<script>")
endif()
execute_process(COMMAND ${EMULATOR} ${MINIHOST} ${SCRIPT} RESULT_VARIABLE status)
if(NOT status STREQUAL "0" AND NOT status STREQUAL "1")
  message(FATAL_ERROR "${SCRIPT} failed: minihost exited with ${status}")
endif()
