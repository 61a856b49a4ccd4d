# libpng and zlib.
include_guard(GLOBAL)
include(TarvoSources)
get_property(sources GLOBAL PROPERTY TARVO_SOURCES)

file(GLOB zlib_sources "${sources}/zlib/*.c")
list(FILTER zlib_sources EXCLUDE REGEX "/gz[a-z]*\\.c$")  # files
tarvo_library_of_sources(zlib ZLIB::ZLIB FOLDER "${sources}/zlib" SOURCES ${zlib_sources})

file(GLOB png_sources "${sources}/libpng1.6/png*.c")
list(FILTER png_sources EXCLUDE REGEX "/pngtest\\.c$")
configure_file("${sources}/libpng1.6/scripts/pnglibconf.h.prebuilt" "${PROJECT_BINARY_DIR}/png/pnglibconf.h" COPYONLY)
tarvo_library_of_sources(png PNG::PNG FOLDER "${sources}/libpng1.6" SOURCES ${png_sources})
target_link_libraries(png PUBLIC zlib)
set(PNG_FOUND TRUE)
