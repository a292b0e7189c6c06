# Checks that every prefix of a declared error code that ends before a dot is declared, too.
# Run: cmake -D ROOT=<source tree> -P CheckErrorCodes.cmake
cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/Rooms.cmake)

set(codes "")
set(faults "")
foreach(room IN LISTS rooms)
  file(GLOB_RECURSE files ${ROOT}/${room}/*.h ${ROOT}/${room}/*.cpp)
  foreach(file IN LISTS files)
    file(READ ${file} text)
    string(REGEX MATCHALL "ErrorCode [A-Za-z0-9_]+{[ \n]*\"error[^\"]*" declarations "${text}")
    foreach(declaration IN LISTS declarations)
      string(REGEX REPLACE ".*\"" "" code "${declaration}")
      list(APPEND codes ${code})
    endforeach()
  endforeach()
endforeach()

foreach(code IN LISTS codes)
  string(REGEX REPLACE "\\.[^.]*$" "" prefix ${code}) # "error" itself has none
  if(NOT prefix IN_LIST codes)
    list(APPEND faults "${code} is declared, ${prefix} is not")
  endif()
endforeach()

list(LENGTH codes count)
if(count EQUAL 0)
  list(APPEND faults "no declaration was found")
endif()
if(faults)
  list(JOIN faults "\n  " text)
  message(FATAL_ERROR "The error codes are no whole tree:\n  ${text}")
endif()
message(STATUS "The ${count} error codes are a whole tree.")
