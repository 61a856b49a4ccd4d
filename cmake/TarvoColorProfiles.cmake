# Looks for lcms2, which makes colours of a profile those of sRGB, and is done without. Sets TARVO_COLOR_PROFILES.
find_path(TARVO_LCMS2_HEADERS lcms2.h)
find_library(TARVO_LCMS2_LIBRARY lcms2)
mark_as_advanced(TARVO_LCMS2_HEADERS TARVO_LCMS2_LIBRARY)
set(TARVO_COLOR_PROFILES OFF)
if(TARVO_LCMS2_HEADERS AND TARVO_LCMS2_LIBRARY)
  set(TARVO_COLOR_PROFILES ON)
endif()
