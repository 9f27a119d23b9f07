# Runs a session that saves its expert system on exit, then a second session
# that loads the saved file and goes on with further forms; the second
# session's output must match the expected file byte for byte.
#
#   -DTAVO=host -DFIRST=first.clp -DSECOND=second.clp -DEXPECTED=NAME.out -DWORK=dir
set(Saved ${WORK}/save_on_exit.saved.clp)
file(REMOVE ${Saved})
execute_process(COMMAND ${TAVO} --save=${Saved} ${FIRST} OUTPUT_QUIET ERROR_VARIABLE Errors RESULT_VARIABLE Status)
if(NOT Status EQUAL 0 OR NOT EXISTS ${Saved})
  message(FATAL_ERROR "the first session did not save (${Status}):\n${Errors}")
endif()
execute_process(COMMAND ${TAVO} ${Saved} ${SECOND} OUTPUT_VARIABLE Actual ERROR_VARIABLE Errors RESULT_VARIABLE Status)
file(READ ${EXPECTED} Expected)
if(NOT Status EQUAL 0 OR NOT Actual STREQUAL Expected)
  message(FATAL_ERROR "--- expected ---\n${Expected}\n--- actual (${Status}) ---\n${Actual}\n--- errors ---\n${Errors}")
endif()
file(REMOVE ${Saved})
