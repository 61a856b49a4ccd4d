# What all targets share. Each folder of the source tree is a target with its own include path, so that an include which
# the architecture does not allow fails to build.

if(NOT CMAKE_BUILD_TYPE AND NOT CMAKE_CONFIGURATION_TYPES)
  set(CMAKE_BUILD_TYPE Release)
endif()
set(CMAKE_CXX_FLAGS_RELEASE "-O3")  # NDEBUG stays off: checks are part of the program
set(CMAKE_CXX_FLAGS_SANITIZED "-O1 -g1")
set(CMAKE_CXX_EXTENSIONS OFF)
set(CMAKE_EXPORT_COMPILE_COMMANDS ON)
set(CMAKE_LIBRARY_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/lib")
set(CMAKE_RUNTIME_OUTPUT_DIRECTORY "${PROJECT_BINARY_DIR}/bin")

find_program(TARVO_CCACHE ccache)
if(TARVO_CCACHE AND NOT CMAKE_CXX_COMPILER_LAUNCHER)
  # What precompiled headers need to be shared; and what is new is read once, by the compiler, which lists its headers.
  set(CMAKE_CXX_COMPILER_LAUNCHER
    "${CMAKE_COMMAND}" -E env CCACHE_SLOPPINESS=pch_defines,time_macros CCACHE_DEPEND=1 "${TARVO_CCACHE}")
endif()

add_library(tarvo_options INTERFACE)
target_compile_features(tarvo_options INTERFACE cxx_std_20)
target_compile_options(tarvo_options INTERFACE
  -ffp-contract=off  # results are fixed to the bit
  -fvisibility=hidden -fvisibility-inlines-hidden
  -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Wno-sign-conversion -Wold-style-cast -Wnon-virtual-dtor)
if(CMAKE_CXX_COMPILER_ID STREQUAL "GNU" AND CMAKE_CXX_COMPILER_VERSION VERSION_LESS 13)
  target_compile_options(tarvo_options INTERFACE -Wno-restrict)  # warns of strings joined with +, wrongly
endif()
if(TARVO_WARNINGS_AS_ERRORS)
  target_compile_options(tarvo_options INTERFACE -Werror)
endif()
if(TARVO_SANITIZE)
  target_compile_options(tarvo_options INTERFACE
    -fsanitize=${TARVO_SANITIZE} -fno-sanitize-recover=all -fno-omit-frame-pointer)
  if(TARVO_SANITIZE MATCHES "address" AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    # Looks at every pointer take a quarter of the time to compile. Elsewhere than where pixels are, a wrong one ends the
    # program anyway, and the second machine and the fuzzers look at all.
    target_compile_options(tarvo_options INTERFACE
      $<$<NOT:$<BOOL:$<TARGET_PROPERTY:TARVO_HOLDS_PIXELS>>>:-fno-sanitize=alignment,null,object-size,vptr>)
  endif()
  target_link_options(tarvo_options INTERFACE -fsanitize=${TARVO_SANITIZE})
  target_compile_definitions(tarvo_options INTERFACE TARVO_SANITIZED)
endif()
if(TARVO_PLAIN_ROWS)
  target_compile_definitions(tarvo_options INTERFACE TARVO_PLAIN_ROWS)
endif()

# What makes mistakes harder to use: guarded stacks, checked copies, tables that cannot be written once a program runs,
# and returns and jumps that land where they should. Sanitizers watch more closely, and in their own way.
add_library(tarvo_hardening INTERFACE)
if(NOT TARVO_SANITIZE AND NOT EMSCRIPTEN)  # whose machine checks returns, jumps and tables by itself
  target_compile_options(tarvo_hardening INTERFACE -fstack-protector-strong -fstack-clash-protection)
  target_compile_options(tarvo_hardening INTERFACE $<$<CONFIG:Release>:-U_FORTIFY_SOURCE> $<$<CONFIG:Release>:-D_FORTIFY_SOURCE=2>)
  target_link_options(tarvo_hardening INTERFACE LINKER:-z,relro,-z,now,-z,noexecstack)
  if(CMAKE_SYSTEM_PROCESSOR STREQUAL "x86_64")
    target_compile_options(tarvo_hardening INTERFACE -fcf-protection=full)
    target_link_options(tarvo_hardening INTERFACE LINKER:-z,shstk)
  endif()
endif()
target_link_libraries(tarvo_options INTERFACE tarvo_hardening)
set(CMAKE_BUILD_RPATH_USE_ORIGIN ON)  # the tool and its libraries find each other wherever they are moved together

# tarvo_in_batches(): the files of this folder and of those below it are compiled some at a time. Most of the time goes to
# the standard library's headers, which each would pay for.
macro(tarvo_in_batches)
  set(CMAKE_UNITY_BUILD ${TARVO_BATCHES})
  set(CMAKE_UNITY_BUILD_BATCH_SIZE 6)
  if(TARVO_BATCHES AND CMAKE_CXX_COMPILER_ID STREQUAL "GNU")
    add_compile_options(-Wno-subobject-linkage)  # takes the files of a batch for headers
  endif()
endmacro()

# tarvo_sources(OUT [EXCEPT files...]): the sources of this folder that no target of its has yet. An exception belongs to
# a target that is not always there.
function(tarvo_sources out)
  cmake_parse_arguments(arg "" "" "EXCEPT" ${ARGN})
  file(GLOB sources CONFIGURE_DEPENDS RELATIVE "${CMAKE_CURRENT_SOURCE_DIR}" *.cpp)
  set(taken ${arg_EXCEPT})
  get_property(targets DIRECTORY PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(of_target ${target} SOURCES)
    list(APPEND taken ${of_target})
  endforeach()
  list(REMOVE_ITEM sources ${taken})
  set(${out} ${sources} PARENT_SCOPE)
endfunction()
