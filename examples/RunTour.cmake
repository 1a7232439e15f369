# Runs one script through minihost with --echo, so that each statement is shown before what it
# prints or reports, and fails only when the script fails to run: exit status 0 (clean) and 1
# (error reports, as the tour makes on purpose) both pass.
#   cmake -DMINIHOST=<program> -DSCRIPT=<file> -P RunTour.cmake
# -DEMULATOR=<program> runs minihost through it (wine, when cross-compiling for Windows).
# NOTE: standard output and standard error go through one pipe and are shown as they come:
# left to CMake's defaults, they travel through two pipes, and the reports would no longer
# stand beside the statements that made them.
if(NOT MINIHOST OR NOT SCRIPT)
  message(FATAL_ERROR "RunTour.cmake needs -DMINIHOST=<program> and -DSCRIPT=<script>")
endif()
execute_process(COMMAND ${EMULATOR} ${MINIHOST} --echo ${SCRIPT}
  OUTPUT_VARIABLE output ERROR_VARIABLE output ECHO_OUTPUT_VARIABLE ECHO_ERROR_VARIABLE
  RESULT_VARIABLE status)
if(NOT status STREQUAL "0" AND NOT status STREQUAL "1")
  message(FATAL_ERROR "${SCRIPT} failed: minihost exited with ${status}")
endif()
