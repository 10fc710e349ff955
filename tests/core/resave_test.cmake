# ketrova resave on the hand-written project: the saved file must equal the
# expected one byte for byte (its DIRPROJECTS is the folder the file was read
# from); a file that is not well-formed fails with status 1, the reason and the
# load's text on stderr, and writes nothing.
# Called with -DKETROVA=<tool> -DDATA=<tests/data/projects> -DWORK=<scratch folder>.
file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
file(COPY ${DATA}/full.cpf DESTINATION ${WORK})

execute_process(COMMAND ${KETROVA} resave ${WORK}/full.cpf ${WORK}/out.cpf
                RESULT_VARIABLE status ERROR_VARIABLE errors)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "resave failed with ${status}: ${errors}")
endif()
# Compared as hex, which keeps every byte (CR included) as it is.
file(READ ${DATA}/full.expected.cpf expected HEX)
file(READ ${WORK}/out.cpf saved HEX)
string(HEX "@DIR@" placeholder)
string(HEX "${WORK}" folder)
string(REPLACE "${placeholder}" "${folder}" expected "${expected}")
if(NOT saved STREQUAL expected)
  message(FATAL_ERROR "${WORK}/out.cpf differs from ${DATA}/full.expected.cpf")
endif()

file(WRITE ${WORK}/bad.cpf "<PROJECT><JOBS>\n")
execute_process(COMMAND ${KETROVA} resave ${WORK}/bad.cpf ${WORK}/bad.out.cpf
                RESULT_VARIABLE status ERROR_VARIABLE errors)
if(NOT status EQUAL 1 OR NOT errors MATCHES
   "^Dies ist keine gültige Projektdatei: [^\n]*\nGrund: [^\n]*\nDas Dokument konnte nicht gelesen werden\\. \r?\nFehlertext : ")
  message(FATAL_ERROR "a broken file gave ${status}: ${errors}")
endif()
if(EXISTS ${WORK}/bad.out.cpf)
  message(FATAL_ERROR "a broken file was written out")
endif()
