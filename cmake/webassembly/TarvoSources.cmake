# Libraries that Debian has no binaries of for this machine, built of its sources of them.
include_guard(GLOBAL)
set(sources "${PROJECT_SOURCE_DIR}/build/sources")
execute_process(COMMAND "${CMAKE_CURRENT_LIST_DIR}/fetch_sources" "${sources}" COMMAND_ERROR_IS_FATAL ANY)
set_property(GLOBAL PROPERTY TARVO_SOURCES "${sources}")

# tarvo_library_of_sources(NAME ALIAS FOLDER folder SOURCES files...): a static library of C sources, with the headers of
# their folder, and with those that were made for it in the folder of its name in the build.
function(tarvo_library_of_sources name alias)
  cmake_parse_arguments(arg "" "FOLDER" "SOURCES" ${ARGN})
  add_library(${name} STATIC ${arg_SOURCES})
  set_target_properties(${name} PROPERTIES UNITY_BUILD OFF)  # names of one file are other things in the next
  target_include_directories(${name} SYSTEM PUBLIC "${PROJECT_BINARY_DIR}/${name}" "${arg_FOLDER}")
  target_compile_options(${name} PRIVATE -w)  # others keep them
  add_library(${alias} ALIAS ${name})
endfunction()
