# Runs DOXYGEN on the Doxyfile of the current folder, which writes below FOLDER, and keeps the manual pages of
# headers and exported names (EXPORTS is the version script). Doxygen makes one for each field of a record too,
# and pages for the files of its own input.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${FOLDER})
file(MAKE_DIRECTORY ${FOLDER})
execute_process(COMMAND ${DOXYGEN} Doxyfile RESULT_VARIABLE status)
if(NOT status EQUAL 0)
  message(FATAL_ERROR "the reference is not complete")
endif()

file(STRINGS ${EXPORTS} lines REGEX "^    [A-Za-z_0-9]+;")
list(TRANSFORM lines REPLACE "^    ([A-Za-z_0-9]+);.*" "\\1")
file(GLOB pages ${FOLDER}/man/man3/*)
foreach(page IN LISTS pages)
  get_filename_component(file ${page} NAME)
  string(REGEX REPLACE "\\.3$" "" name ${file})
  if(NOT name IN_LIST lines AND NOT name MATCHES "^[A-Za-z_0-9]+\\.h$")
    file(REMOVE ${page})
    continue()
  endif()
  # A quotation mark at the beginning of a line would make it a command that no formatter knows.
  file(READ ${page} text)
  string(REPLACE "\n'" "\n\\&'" text "${text}")
  file(WRITE ${page} "${text}")
endforeach()
foreach(name IN LISTS lines)
  if(NOT EXISTS ${FOLDER}/man/man3/${name}.3)
    message(FATAL_ERROR "no manual page for ${name}")
  endif()
endforeach()
file(TOUCH ${FOLDER}/done)
