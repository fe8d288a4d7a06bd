# Compiles SOURCE with the macro FAULT, and passes if the compiler refuses it with a text that matches MESSAGE. With no
# FAULT the source must compile.
separate_arguments(flags UNIX_COMMAND "${FLAGS}")
if(FAULT)
  list(APPEND flags -D${FAULT})
endif()
set(ENV{LC_ALL} C)
execute_process(COMMAND ${COMPILER} ${flags} -std=c++20 -fsyntax-only -I${INCLUDE} ${SOURCE}
  RESULT_VARIABLE result OUTPUT_VARIABLE output ERROR_VARIABLE output)
if(MESSAGE MATCHES "^\\^")
  # The line of the first error.
  string(REGEX MATCH "[^\n]*error:[^\n]*" output "${output}")
endif()
if(NOT FAULT)
  if(NOT result EQUAL 0)
    message(FATAL_ERROR "Refused without a fault:\n${output}")
  endif()
elseif(result EQUAL 0)
  message(FATAL_ERROR "${FAULT} was compiled.")
elseif(NOT output MATCHES "${MESSAGE}")
  message(FATAL_ERROR "${FAULT} was refused, but not with \"${MESSAGE}\":\n${output}")
endif()
