# Installs to a fresh prefix, builds and runs the examples against it, and compares the program in
# README.md with its source.
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK})
execute_process(COMMAND ${CMAKE_COMMAND} --install ${BUILD} --prefix ${WORK}/prefix
  COMMAND_ERROR_IS_FATAL ANY OUTPUT_QUIET)
set(ENV{CXX} ${CXX})
execute_process(COMMAND ${CMAKE_CURRENT_LIST_DIR}/run_examples ${WORK}/prefix ${WORK}/examples
  COMMAND_ERROR_IS_FATAL ANY)

file(READ ${SOURCE}/README.md readme)
file(READ ${SOURCE}/examples/first_program.cpp program)
string(STRIP "${program}" program)
string(REPLACE "\n" "\n    " shown "    ${program}")
string(REPLACE "\n    \n" "\n\n" shown "${shown}")
string(FIND "${readme}" "${shown}" place)
if(place EQUAL -1)
  message(FATAL_ERROR "README.md does not show examples/first_program.cpp as it is")
endif()
