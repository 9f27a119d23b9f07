# Runs a session that writes its pictures when it ends, checks what they
# hold, and renders each with dot -Tsvg where Graphviz is installed; without
# dot the rendering is skipped, and so is the test. A picture that cannot be
# written ends the session with status 2.
#
#   -DTAVO=host -DSCRIPT=pictures.clp -DWORK=dir
set(Network ${WORK}/pictures.network.dot)
set(Agenda ${WORK}/pictures.agenda.dot)
file(REMOVE ${Network} ${Agenda} ${Network}.svg ${Agenda}.svg)
execute_process(COMMAND ${TAVO} --dot-network=${Network} --dot-agenda=${Agenda} ${SCRIPT}
                OUTPUT_QUIET ERROR_VARIABLE Errors RESULT_VARIABLE Status)
if(NOT Status EQUAL 0 OR NOT EXISTS ${Network} OR NOT EXISTS ${Agenda})
  message(FATAL_ERROR "the session did not write its pictures (${Status}):\n${Errors}")
endif()
file(READ ${Network} NetworkText)
file(READ ${Agenda} AgendaText)
foreach(Expected IN ITEMS "digraph rete {" "label=\"café-regular\"" "label=\"exists\"" "shared by 3 rules")
  string(FIND "${NetworkText}" "${Expected}" Found)
  if(Found EQUAL -1)
    message(FATAL_ERROR "the network picture lacks ${Expected}:\n${NetworkText}")
  endif()
endforeach()
foreach(Expected IN ITEMS "digraph agenda {" "1. café-regular\\nsalience 10" "focus1 [label=\"LATER\"]")
  string(FIND "${AgendaText}" "${Expected}" Found)
  if(Found EQUAL -1)
    message(FATAL_ERROR "the agenda picture lacks ${Expected}:\n${AgendaText}")
  endif()
endforeach()

execute_process(COMMAND ${TAVO} --dot-network=${WORK}/no-such-folder/network.dot ${SCRIPT}
                OUTPUT_QUIET ERROR_VARIABLE Errors RESULT_VARIABLE Status)
if(NOT Status EQUAL 2 OR NOT Errors MATCHES "tavo: cannot write .*network.dot")
  message(FATAL_ERROR "an unwritable picture gave status ${Status}:\n${Errors}")
endif()

find_program(DOT dot)
if(NOT DOT)
  message("dot is not installed: the pictures were not rendered")
  return()
endif()
foreach(Picture IN ITEMS ${Network} ${Agenda})
  # dot only warns about text it cannot read: any word from it fails.
  execute_process(COMMAND ${DOT} -Tsvg ${Picture} -o ${Picture}.svg ERROR_VARIABLE Errors RESULT_VARIABLE Status)
  if(NOT Status EQUAL 0 OR NOT Errors STREQUAL "" OR NOT EXISTS ${Picture}.svg)
    message(FATAL_ERROR "dot could not render ${Picture} (${Status}):\n${Errors}")
  endif()
  file(READ ${Picture}.svg Svg)
  string(FIND "${Svg}" "café" Found)
  if(Found EQUAL -1)
    message(FATAL_ERROR "the rendering of ${Picture} lacks the rule's name")
  endif()
  file(REMOVE ${Picture} ${Picture}.svg)
endforeach()
