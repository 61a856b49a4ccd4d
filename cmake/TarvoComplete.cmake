# A test that every source file of the tree belongs to a target of this build. To be included last.

# tarvo_built_sources(OUT FOLDER): the sources of all targets of the folder and of those below it, as absolute paths.
function(tarvo_built_sources out folder)
  set(built)
  get_property(targets DIRECTORY "${folder}" PROPERTY BUILDSYSTEM_TARGETS)
  foreach(target IN LISTS targets)
    get_target_property(sources ${target} SOURCES)
    foreach(source IN LISTS sources)
      cmake_path(ABSOLUTE_PATH source BASE_DIRECTORY "${folder}" NORMALIZE)
      list(APPEND built "${source}")
    endforeach()
  endforeach()
  get_property(folders_below DIRECTORY "${folder}" PROPERTY SUBDIRECTORIES)
  foreach(below IN LISTS folders_below)
    tarvo_built_sources(built_below "${below}")
    list(APPEND built ${built_below})
  endforeach()
  set(${out} ${built} PARENT_SCOPE)
endfunction()

tarvo_built_sources(built "${PROJECT_SOURCE_DIR}")
# Other machines'; programs that a test builds against an installed libtarvo; the Python package, whose sources are
# those of its folder.
file(GLOB python_sources "${PROJECT_SOURCE_DIR}/python/native/*.cpp")
list(APPEND built ${python_sources}
  "${PROJECT_SOURCE_DIR}/tests/powerpc/rounding_instruction.cpp"
  "${PROJECT_SOURCE_DIR}/web/native/layout.cpp"
  "${PROJECT_SOURCE_DIR}/examples/library/contrast.cpp"
  "${PROJECT_SOURCE_DIR}/examples/library/server.cpp")
list(JOIN built "\n" built)
file(WRITE "${PROJECT_BINARY_DIR}/built_sources.txt" "${built}\n")
add_test(NAME every_source_is_built
  COMMAND "${PROJECT_SOURCE_DIR}/cmake/check_sources" "${PROJECT_SOURCE_DIR}" "${PROJECT_BINARY_DIR}/built_sources.txt")
