# Runs a generator of benchmark input and compares what it writes with the
# committed file byte for byte.
#
#   -DPYTHON=interpreter -DGENERATOR=script.py -DSIZE=n -DEXPECTED=file
execute_process(COMMAND ${PYTHON} ${GENERATOR} ${SIZE}
                OUTPUT_VARIABLE Actual ERROR_VARIABLE Errors RESULT_VARIABLE Status)
if(NOT Status EQUAL 0)
  message(FATAL_ERROR "${GENERATOR} ${SIZE} failed (${Status}):\n${Errors}")
endif()
file(READ ${EXPECTED} Expected)
if(NOT Actual STREQUAL Expected)
  message(FATAL_ERROR "${GENERATOR} ${SIZE} no longer writes ${EXPECTED}: run it again and commit the file")
endif()
