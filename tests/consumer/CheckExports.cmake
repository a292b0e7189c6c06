# Holds the names that the library exports against the list of them; overloads count once. Of a DLL
# also the libraries that it needs: each must be a part of every Windows.
cmake_minimum_required(VERSION 3.25)
set(parts_of_windows
  ADVAPI32 bcrypt CRYPT32 IPHLPAPI KERNEL32 msvcrt MSWSOCK NETAPI32 SHELL32 USER32 WS2_32)

separate_arguments(lister UNIX_COMMAND ${LISTER})
execute_process(COMMAND ${lister} ${LIBRARY} OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]*" needed "${listing}")
foreach(line IN LISTS needed)
  string(REGEX REPLACE "DLL Name: (.*)\\.[dD][lL][lL].*" "\\1" name "${line}")
  if(NOT name IN_LIST parts_of_windows)
    message(FATAL_ERROR "The library needs ${name}.dll, which not every Windows has.")
  endif()
endforeach()
if(needed) # a DLL: its names stand behind their ordinals
  string(REGEX REPLACE ".*\\[Ordinal/Name Pointer\\] Table[^\n]*\n" "" table "${listing}")
  string(REGEX REPLACE "\n\n.*" "\n" table "${table}")
  string(REGEX REPLACE "[ \t]*\\[ *[0-9]+\\] ([^\n]*)" "\\1" symbols "${table}")
else()
  string(REGEX REPLACE " [A-Za-z] [0-9a-f]+ ?[0-9a-f]*\n" "\n" symbols "${listing}")
endif()

set(file ${CMAKE_CURRENT_BINARY_DIR}/symbols)
file(WRITE ${file} "${symbols}")
execute_process(COMMAND ${CXXFILT} INPUT_FILE ${file} OUTPUT_VARIABLE names
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "(\\(|\\[abi)[^\n]*" "" names "${names}")
string(REPLACE "\n" ";" names "${names}")
list(REMOVE_ITEM names "")
list(REMOVE_DUPLICATES names)
list(SORT names)
list(JOIN names "\n" actual)
file(READ ${EXPECTED} expected)
string(STRIP "${expected}" expected)
if(needed) # the name of a type stays within its module there
  string(REGEX REPLACE "typeinfo name [^\n]*\n" "" expected "${expected}")
endif()
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "The exported surface is not the expected one. It is:\n${actual}")
endif()
