# Compares the names that the library exports with those that its Debian package promises; overloads
# count once. Also checks that a DLL needs only libraries that are a part of every Windows.
cmake_minimum_required(VERSION 3.25)
set(parts_of_windows
  ADVAPI32 bcrypt CRYPT32 IPHLPAPI KERNEL32 msvcrt MSWSOCK NETAPI32 SHELL32 USER32 WS2_32)

# Sets `result` to the names of the symbols, without parameters, one a line.
function(demangle symbols result)
  set(file ${CMAKE_CURRENT_BINARY_DIR}/symbols)
  file(WRITE ${file} "${symbols}")
  execute_process(COMMAND ${CXXFILT} INPUT_FILE ${file} OUTPUT_VARIABLE names
    COMMAND_ERROR_IS_FATAL ANY)
  string(REGEX REPLACE "(\\(|\\[abi)[^\n]*" "" names "${names}")
  string(REPLACE "\n" ";" names "${names}")
  list(REMOVE_ITEM names "")
  list(REMOVE_DUPLICATES names)
  list(SORT names)
  list(JOIN names "\n" names)
  set(${result} "${names}" PARENT_SCOPE)
endfunction()

separate_arguments(lister UNIX_COMMAND ${LISTER})
execute_process(COMMAND ${lister} ${LIBRARY} OUTPUT_VARIABLE listing COMMAND_ERROR_IS_FATAL ANY)
string(REGEX MATCHALL "DLL Name: [^\n]*" needed "${listing}")
foreach(line IN LISTS needed)
  string(REGEX REPLACE "DLL Name: (.*)\\.[dD][lL][lL].*" "\\1" name "${line}")
  if(NOT name IN_LIST parts_of_windows)
    message(FATAL_ERROR "The library needs ${name}.dll, which not every Windows has.")
  endif()
endforeach()
if(needed) # a DLL: its names follow their ordinals
  string(REGEX REPLACE ".*\\[Ordinal/Name Pointer\\] Table[^\n]*\n" "" table "${listing}")
  string(REGEX REPLACE "\n\n.*" "\n" table "${table}")
  string(REGEX REPLACE "[ \t]*\\[ *[0-9]+\\] ([^\n]*)" "\\1" symbols "${table}")
else()
  string(REGEX REPLACE " [A-Za-z] [0-9a-f]+ ?[0-9a-f]*\n" "\n" symbols "${listing}")
endif()
demangle("${symbols}" actual)

file(STRINGS ${PROMISED} lines REGEX "^ ")
list(TRANSFORM lines REPLACE "^ ([^@]*)@.*" "\\1")
list(JOIN lines "\n" symbols)
demangle("${symbols}" expected)
if(needed) # in a DLL the name of a type is not exported
  string(REGEX REPLACE "typeinfo name [^\n]*\n" "" expected "${expected}")
endif()
if(NOT actual STREQUAL expected)
  message(FATAL_ERROR "The exported names are not those of ${PROMISED}, but:\n${actual}")
endif()
