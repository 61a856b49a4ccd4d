# tarvo_one_object(OUT EXPORTS list OF targets...): all objects of the targets, and of the project's targets that they link,
# linked into one, of which nothing can be seen from outside but what the list names. So a static library of it brings no
# other names into a program, and needs no other library of this project.
function(tarvo_one_object out)
  cmake_parse_arguments(arg "" "EXPORTS" "OF" ${ARGN})
  set(objects $<TARGET_OBJECTS:TarvoPlatform>)  # which a shared library of the project has otherwise
  set(seen)
  set(waiting ${arg_OF})
  while(waiting)
    list(POP_FRONT waiting target)
    if(NOT TARGET ${target} OR target IN_LIST seen)
      continue()
    endif()
    list(APPEND seen ${target})
    get_target_property(imported ${target} IMPORTED)
    if(imported)
      continue()
    endif()
    get_target_property(type ${target} TYPE)
    if(type STREQUAL "OBJECT_LIBRARY" OR type STREQUAL "STATIC_LIBRARY")
      list(APPEND objects "$<TARGET_OBJECTS:${target}>")
    endif()
    foreach(property LINK_LIBRARIES INTERFACE_LINK_LIBRARIES)
      get_target_property(linked ${target} ${property})
      if(linked AND NOT (type STREQUAL "INTERFACE_LIBRARY" AND property STREQUAL "LINK_LIBRARIES"))
        string(REGEX REPLACE "\\$<LINK_ONLY:([^>]*)>" "\\1" linked "${linked}")
        list(APPEND waiting ${linked})
      endif()
    endforeach()
  endwhile()
  list(REMOVE_DUPLICATES objects)

  set(all "${CMAKE_CURRENT_BINARY_DIR}/all.o")
  set(object "${CMAKE_CURRENT_BINARY_DIR}/tarvo.o")
  file(STRINGS "${arg_EXPORTS}" names)
  list(TRANSFORM names REPLACE "@.*" "")
  list(JOIN names "\n" names)
  file(WRITE "${CMAKE_CURRENT_BINARY_DIR}/exports.keep" "${names}\n")
  # Sections that many objects have are thrown together here: later they would no longer be known as the same.
  add_custom_command(OUTPUT "${object}"
    COMMAND "${CMAKE_CXX_COMPILER}" -r -nostdlib -no-pie -Wl,--force-group-allocation -o "${all}" ${objects}
    COMMAND "${CMAKE_OBJCOPY}" "--keep-global-symbols=${CMAKE_CURRENT_BINARY_DIR}/exports.keep" "${all}" "${object}"
    DEPENDS ${objects} "${arg_EXPORTS}" COMMAND_EXPAND_LISTS VERBATIM)
  set_source_files_properties("${object}" PROPERTIES EXTERNAL_OBJECT ON GENERATED ON)
  set(${out} "${object}" PARENT_SCOPE)
endfunction()
