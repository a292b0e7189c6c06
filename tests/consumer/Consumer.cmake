# Installs to a fresh prefix, builds the example by find_package and by pkg-config, and runs both.
if(EXISTS /etc/orvane-systems/certificates.conf)
  message(STATUS "skipped: this machine has a configuration of its own")
  return()
endif()
cmake_minimum_required(VERSION 3.25)

file(REMOVE_RECURSE ${WORK})
file(MAKE_DIRECTORY ${WORK}/home)
set(prefix ${WORK}/prefix)

function(run)
  execute_process(COMMAND ${ARGN} COMMAND_ERROR_IS_FATAL ANY OUTPUT_VARIABLE output)
  set(output "${output}" PARENT_SCOPE)
endfunction()

function(expect_output program)
  run(${CMAKE_COMMAND} -E env --unset=ORVA_Certificates --unset=USERPROFILE HOME=${WORK}/home
      LD_LIBRARY_PATH=${prefix}/${LIBDIR} ${program})
  if(NOT output STREQUAL "/keys/srv01.key\n")
    message(FATAL_ERROR "${program} printed: ${output}")
  endif()
endfunction()

run(${CMAKE_COMMAND} --install ${BUILD} --prefix ${prefix})

run(${CMAKE_COMMAND} -S ${SOURCE}/examples -B ${WORK}/build -G Ninja
    -D CMAKE_CXX_COMPILER=${CXX} -D CMAKE_PREFIX_PATH=${prefix})
run(${CMAKE_COMMAND} --build ${WORK}/build)
expect_output(${WORK}/build/first_program)

set(ENV{PKG_CONFIG_PATH} ${prefix}/${LIBDIR}/pkgconfig)
run(pkg-config --define-variable=prefix=${prefix} --cflags --libs VDCertificatesConfigurationFile)
separate_arguments(flags UNIX_COMMAND "${output}")
run(${CXX} -std=c++20 -Wall -Wextra -Werror ${SOURCE}/examples/first_program.cpp ${flags}
    -o ${WORK}/by_pkg_config)
expect_output(${WORK}/by_pkg_config)

# The README shows the same program, word for word.
file(READ ${SOURCE}/README.md readme)
file(READ ${SOURCE}/examples/first_program.cpp program)
string(STRIP "${program}" program)
string(REPLACE "\n" "\n    " shown "    ${program}")
string(REPLACE "\n    \n" "\n\n" shown "${shown}")
string(FIND "${readme}" "${shown}" place)
if(place EQUAL -1)
  message(FATAL_ERROR "README.md does not show examples/first_program.cpp as it is")
endif()
