# Runs a host example and compares what it prints with the expected output
# byte for byte; it must end with status 0 and write nothing to standard
# error.
#
#   -DPROGRAM=example_NAME -DEXPECTED=NAME.out
execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE Actual ERROR_VARIABLE ActualErrors RESULT_VARIABLE Status)
file(READ ${EXPECTED} Expected)
if(NOT Actual STREQUAL Expected)
  message(FATAL_ERROR "Output of ${PROGRAM} differs.\n--- expected ---\n${Expected}\n--- actual ---\n${Actual}\n--- errors ---\n${ActualErrors}")
endif()
if(NOT Status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} failed (${Status}):\n${ActualErrors}")
endif()
if(NOT ActualErrors STREQUAL "")
  message(FATAL_ERROR "${PROGRAM} wrote to standard error:\n${ActualErrors}")
endif()
