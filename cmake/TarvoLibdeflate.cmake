# Looks for libdeflate, which compresses in less time than zlib and is done without. Sets TARVO_LIBDEFLATE.
find_path(TARVO_LIBDEFLATE_HEADERS libdeflate.h)
find_library(TARVO_LIBDEFLATE_LIBRARY deflate)
mark_as_advanced(TARVO_LIBDEFLATE_HEADERS TARVO_LIBDEFLATE_LIBRARY)
set(TARVO_LIBDEFLATE OFF)
if(TARVO_LIBDEFLATE_HEADERS AND TARVO_LIBDEFLATE_LIBRARY)
  set(TARVO_LIBDEFLATE ON)
endif()
