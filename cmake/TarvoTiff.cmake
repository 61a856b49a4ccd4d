# Looks for libtiff, which reads TIFF files; such files are done without. Sets TARVO_HAS_TIFF. Before 4.5 what the library
# says of a file goes to all of the program.
set(TARVO_HAS_TIFF OFF)
if(TARVO_TIFF AND NOT EMSCRIPTEN)
  find_package(TIFF 4.5 QUIET)
  if(TARGET TIFF::TIFF)
    set(TARVO_HAS_TIFF ON)
  endif()
endif()
