# Packages have their manual pages compressed.
file(GLOB_RECURSE pages "${CPACK_TEMPORARY_DIRECTORY}/tarvo.1")
foreach(page IN LISTS pages)
  execute_process(COMMAND gzip -9nf "${page}" COMMAND_ERROR_IS_FATAL ANY)
endforeach()
