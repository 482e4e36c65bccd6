# Runs an example, which must exit with 0 and print what the comment at its top says, where it says "It prints":
#   cmake -DPROGRAM=... -DSOURCE=... [-DARGUMENTS=...] -P RunExample.cmake
execute_process(COMMAND ${PROGRAM} ${ARGUMENTS} OUTPUT_VARIABLE printed RESULT_VARIABLE status)
message("${printed}")
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${status}")
endif()
file(READ ${SOURCE} source)
if(source MATCHES "\n// It prints\n((//     [^\n]*\n)+)")
  string(REGEX REPLACE "//     ([^\n]*\n)" "\\1" expected "${CMAKE_MATCH_1}")
  if(NOT printed STREQUAL expected)
    message(FATAL_ERROR "its comment says that it prints\n${expected}")
  endif()
endif()
