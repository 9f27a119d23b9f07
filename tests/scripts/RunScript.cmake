# Runs one script through the command-line host and compares what it prints
# with the expected output byte for byte; an optional NAME.err beside the
# expected output holds the expected standard error, an optional NAME.in
# beside the script the standard input, and an optional NAME.args beside the
# script the host's options, separated by blanks or lines.
#
#   -DTAVO=host -DSCRIPT=NAME.clp -DEXPECTED=NAME.out
#   -DINPUT=file        standard input from this file instead, when it exists
#   -DEMPTY_ERRORS=ON   without an expected-errors file, standard error must
#                       be empty (otherwise only the exit status counts)
#   -DPRELOAD=file      a file the host runs before the script, such as the
#                       rules that a script of generated facts is for
if(DEFINED INPUT)
  set(InputFile ${INPUT})
else()
  string(REGEX REPLACE "\\.clp$" ".in" InputFile ${SCRIPT})
endif()
if(NOT EXISTS ${InputFile})
  set(InputFile /dev/null)
endif()
string(REGEX REPLACE "\\.clp$" ".args" ArgumentsFile ${SCRIPT})
set(Arguments)
if(EXISTS ${ArgumentsFile})
  file(READ ${ArgumentsFile} Arguments)
  string(STRIP "${Arguments}" Arguments)
  separate_arguments(Arguments UNIX_COMMAND "${Arguments}")
endif()
execute_process(COMMAND ${TAVO} ${Arguments} ${PRELOAD} ${SCRIPT} INPUT_FILE ${InputFile}
                OUTPUT_VARIABLE Actual ERROR_VARIABLE ActualErrors RESULT_VARIABLE Status)
file(READ ${EXPECTED} Expected)
if(NOT Actual STREQUAL Expected)
  message(FATAL_ERROR "Output of ${SCRIPT} differs.\n--- expected ---\n${Expected}\n--- actual ---\n${Actual}\n--- errors ---\n${ActualErrors}")
endif()
string(REGEX REPLACE "\\.out$" ".err" ExpectedErrorsFile ${EXPECTED})
if(EXISTS ${ExpectedErrorsFile})
  file(READ ${ExpectedErrorsFile} ExpectedErrors)
  if(NOT ActualErrors STREQUAL ExpectedErrors)
    message(FATAL_ERROR "Errors of ${SCRIPT} differ.\n--- expected ---\n${ExpectedErrors}\n--- actual ---\n${ActualErrors}")
  endif()
elseif(NOT Status EQUAL 0)
  message(FATAL_ERROR "${SCRIPT} failed (${Status}):\n${ActualErrors}")
elseif(EMPTY_ERRORS AND NOT ActualErrors STREQUAL "")
  message(FATAL_ERROR "${SCRIPT} wrote to standard error:\n${ActualErrors}")
endif()
