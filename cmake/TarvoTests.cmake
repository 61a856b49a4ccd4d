# How test programs are built and run.

# The time of a test program goes into compiling it. Most of that is spent on the headers that all share, which are read
# once, on optimisation, of which tests get as little as lets them run in a fair time, and on what sanitizers add to their
# own code: it calls the checks of addresses where the product has them in place, and scopes of its locals go unchecked.
add_library(tarvo_test_options INTERFACE)
if(EMSCRIPTEN)
  target_compile_options(tarvo_test_options INTERFACE -O1)  # the least that is optimised there
  # Code is not optimised once more as it is linked.
  add_link_options(-O1 -sNODERAWFS=1 -sEXIT_RUNTIME=1 -sALLOW_MEMORY_GROWTH=1 -sENVIRONMENT=node
    "SHELL:--pre-js \"${CMAKE_CURRENT_LIST_DIR}/webassembly/environment.js\"")
else()
  target_compile_options(tarvo_test_options INTERFACE -Og)
endif()
if(CMAKE_CXX_FLAGS MATCHES "-fprofile-update=atomic")
  # Counts that threads lose make what is subtracted from them wrong; nobody asks for those of the tests' own code.
  target_compile_options(tarvo_test_options INTERFACE -fprofile-update=single)
endif()
set(tarvo_test_headers
  <gtest/gtest.h>
  <algorithm> <array> <cmath> <cstdint> <cstring> <filesystem> <functional> <limits> <map> <memory> <optional> <random>
  <set> <span> <sstream> <stdexcept> <string> <string_view> <utility> <variant> <vector>)

# The main function of all test programs, and the owner of the headers.
add_library(tarvo_test_main OBJECT "${CMAKE_CURRENT_LIST_DIR}/../tests/main.cpp")
target_link_libraries(tarvo_test_main PUBLIC GTest::gtest PRIVATE tarvo_options tarvo_test_options)
target_precompile_headers(tarvo_test_main PRIVATE ${tarvo_test_headers})

# tarvo_test_code(TARGET): the target's sources are compiled as those of test programs are.
function(tarvo_test_code target)
  target_link_libraries(${target} PRIVATE GTest::gtest tarvo_options tarvo_test_options)
  target_precompile_headers(${target} REUSE_FROM tarvo_test_main)
endfunction()

# tarvo_test(NAME [SOURCES files...] [EXCEPT files...] [USES targets...] [SHARDS n]): a GoogleTest program of these
# sources, or else of all in the folder that no program has yet. CTest runs it as a whole, in n shards side by side.
function(tarvo_test name)
  cmake_parse_arguments(arg "" "SHARDS" "SOURCES;EXCEPT;USES" ${ARGN})
  if(NOT arg_SOURCES)
    tarvo_sources(arg_SOURCES EXCEPT ${arg_EXCEPT})
  endif()
  add_executable(${name} ${arg_SOURCES})
  target_link_libraries(${name} PRIVATE ${arg_USES} tarvo_test_main)
  tarvo_test_code(${name})
  # Not of what programs share, whose judges look at every pixel.
  if(TARVO_SANITIZE MATCHES "address" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    target_compile_options(${name} PRIVATE
      "SHELL:--param asan-instrumentation-with-call-threshold=0" -fno-sanitize-address-use-after-scope)
  endif()
  if(TARGET tarvo_test_machine)
    target_link_libraries(${name} PRIVATE tarvo_test_machine)
  endif()

  if(NOT arg_SHARDS)
    set(arg_SHARDS 1)
  endif()
  foreach(shard RANGE 1 ${arg_SHARDS})
    set(test ${name}.${shard})
    math(EXPR index "${shard} - 1")
    add_test(NAME ${test} COMMAND ${name})
    set_tests_properties(${test} PROPERTIES TIMEOUT 900
      ENVIRONMENT "GTEST_TOTAL_SHARDS=${arg_SHARDS};GTEST_SHARD_INDEX=${index};GTEST_OUTPUT=xml:${PROJECT_BINARY_DIR}/results/${test}.xml")
  endforeach()
endfunction()
