# libpng.
include_guard(GLOBAL)
include(TarvoSources)
find_package(ZLIB REQUIRED)
get_property(sources GLOBAL PROPERTY TARVO_SOURCES)

file(GLOB png_sources "${sources}/libpng1.6/png*.c")
list(FILTER png_sources EXCLUDE REGEX "/pngtest\\.c$")
configure_file("${sources}/libpng1.6/scripts/pnglibconf.h.prebuilt" "${PROJECT_BINARY_DIR}/png/pnglibconf.h" COPYONLY)
tarvo_library_of_sources(png PNG::PNG FOLDER "${sources}/libpng1.6" SOURCES ${png_sources})
target_link_libraries(png PUBLIC ZLIB::ZLIB)
set(PNG_FOUND TRUE)
