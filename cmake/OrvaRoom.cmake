# One CMake target per room. orva_room(name SOURCES ... PUBLIC ... PRIVATE ...) makes the static
# library `name` with the alias orva::name; PUBLIC are the targets that its headers show, PRIVATE
# those that only its sources use. orva_test(name ...) makes the room's test program, which ctest
# starts once, or once a shard: SHARDS is for tests that wait more than they compute.

add_library(orva_options INTERFACE)
target_compile_features(orva_options INTERFACE cxx_std_20)
target_include_directories(orva_options INTERFACE ${PROJECT_SOURCE_DIR})
target_compile_options(orva_options INTERFACE
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wnon-virtual-dtor -Wold-style-cast -Werror
  -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
if(ORVA_SANITIZERS)
  target_compile_options(orva_options INTERFACE
    -fsanitize=${ORVA_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  target_link_options(orva_options INTERFACE -fsanitize=${ORVA_SANITIZERS})
endif()

function(orva_room name)
  cmake_parse_arguments(room "" "" "SOURCES;PUBLIC;PRIVATE" ${ARGN})
  add_library(${name} STATIC ${room_SOURCES})
  add_library(orva::${name} ALIAS ${name})
  target_link_libraries(${name} PUBLIC orva_options ${room_PUBLIC} PRIVATE ${room_PRIVATE})
endfunction()

function(orva_test name)
  cmake_parse_arguments(test "" "SHARDS" "SOURCES;LINK" ${ARGN})
  add_executable(test_${name} ${test_SOURCES})
  target_link_libraries(test_${name}
    PRIVATE ${test_LINK} orva_test_support)
  set(shards 1)
  if(test_SHARDS)
    set(shards ${test_SHARDS})
  endif()
  foreach(number RANGE 1 ${shards})
    math(EXPR index "${number} - 1")
    add_test(NAME ${name}.${number} COMMAND test_${name} --gtest_brief=1)
    set_tests_properties(${name}.${number} PROPERTIES
      TIMEOUT 300 ENVIRONMENT "GTEST_TOTAL_SHARDS=${shards};GTEST_SHARD_INDEX=${index}")
  endforeach()
endfunction()
