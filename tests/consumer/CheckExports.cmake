# Holds the symbols that the library exports against the list of them.
execute_process(COMMAND ${NM} -D --defined-only --demangle --format=posix ${LIBRARY}
  OUTPUT_VARIABLE output COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE " [A-Za-z] [0-9a-f]+ ?[0-9a-f]*\n" "\n" names "${output}")
string(REPLACE "\n" ";" names "${names}")
list(REMOVE_ITEM names "")
list(REMOVE_DUPLICATES names)
list(SORT names)
list(JOIN names "\n" actual)
file(READ ${EXPECTED} expected)
string(STRIP "${expected}" expected)
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "The exported surface is not the expected one. It is:\n${actual}")
endif()
