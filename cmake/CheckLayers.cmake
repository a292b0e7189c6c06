# Checks every #include between rooms against the graph in docs/architecture.md, and that only
# platform uses the operating system's headers and macros.
# Run: cmake -D ROOT=<source tree> -P CheckLayers.cmake
cmake_minimum_required(VERSION 3.25)

include(${CMAKE_CURRENT_LIST_DIR}/Rooms.cmake)

set(faults "")
foreach(room IN LISTS rooms)
  file(GLOB_RECURSE files RELATIVE ${ROOT} ${ROOT}/${room}/*.h ${ROOT}/${room}/*.cpp)
  if(NOT files)
    list(APPEND faults "${room}: no source files found")
  endif()
  foreach(file IN LISTS files)
    file(STRINGS ${ROOT}/${file} lines REGEX "^[ \t]*#")
    foreach(line IN LISTS lines)
      if(line MATCHES "#[ \t]*include[ \t]*\"([^/\"]+)/")
        set(target ${CMAKE_MATCH_1})
        if(NOT target STREQUAL room AND NOT target IN_LIST allowed_${room})
          list(APPEND faults "${file}: ${room} must not include ${target}")
        endif()
      endif()
      if(NOT room STREQUAL "platform")
        if(line MATCHES
           "#[ \t]*include[ \t]*<((windows|winsock2|ws2tcpip|winioctl|psapi|shellapi|io|direct|unistd|fcntl|pthread|dirent|netdb|poll|termios|dlfcn|fts)\\.h|sys/|arpa/)")
          list(APPEND faults "${file}: the operating system's headers belong to platform: ${line}")
        endif()
        if(line MATCHES "#.*(_WIN32|__linux__|__unix__)" AND
           NOT file STREQUAL "ConfigurationFile/export.h")
          list(APPEND faults "${file}: only platform asks which system it is: ${line}")
        endif()
      endif()
    endforeach()
  endforeach()
endforeach()

if(faults)
  list(JOIN faults "\n  " text)
  message(FATAL_ERROR "The layers do not hold:\n  ${text}")
endif()
message(STATUS "The layers hold.")
