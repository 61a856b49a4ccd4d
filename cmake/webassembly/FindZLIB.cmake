# zlib, without its files.
include_guard(GLOBAL)
include(TarvoSources)
get_property(sources GLOBAL PROPERTY TARVO_SOURCES)

file(GLOB zlib_sources "${sources}/zlib/*.c")
list(FILTER zlib_sources EXCLUDE REGEX "/gz[a-z]*\\.c$")
tarvo_library_of_sources(zlib ZLIB::ZLIB FOLDER "${sources}/zlib" SOURCES ${zlib_sources})
set(ZLIB_FOUND TRUE)
