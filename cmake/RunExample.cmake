# Runs PROGRAM with a new temporary folder as its argument and compares its output with the file EXPECTED.
# In the output the folder's name reads FOLDER. Standard input is the file INPUT, where that exists.
execute_process(COMMAND mktemp -d OUTPUT_VARIABLE folder OUTPUT_STRIP_TRAILING_WHITESPACE
  COMMAND_ERROR_IS_FATAL ANY)
if(NOT EXISTS ${INPUT})
  set(INPUT /dev/null)
endif()
execute_process(COMMAND ${PROGRAM} ${folder} INPUT_FILE ${INPUT} OUTPUT_VARIABLE output RESULT_VARIABLE status)
file(REMOVE_RECURSE ${folder})
if(NOT status EQUAL 0)
  message(FATAL_ERROR "${PROGRAM} ended with ${status}\n${output}")
endif()
string(REPLACE "${folder}" FOLDER output "${output}")
file(READ ${EXPECTED} expected)
if(NOT output STREQUAL expected)
  message(FATAL_ERROR "${PROGRAM} printed\n${output}\ninstead of\n${expected}")
endif()
