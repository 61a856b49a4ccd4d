# All that can be chosen of a build. Presets choose for developers; what they leave is for users.

option(TARVO_LIBRARY "Build libtarvo, which programs link" ON)
option(BUILD_SHARED_LIBS "libtarvo as a shared library" ON)
option(TARVO_TOOL "Build the tarvo command (CLI11)" ON)
option(TARVO_PICTURE_LIBRARIES "Read and write PNG and JPEG files (libpng, libjpeg)" ON)
option(TARVO_SCREEN "Capture the screen of an X display, where libxcb and libxcb-shm are" ON)
option(TARVO_TESTS "Build the tests (GoogleTest)" ${PROJECT_IS_TOP_LEVEL})
option(TARVO_BENCHMARKS "Build the benchmarks (Google Benchmark)" OFF)
option(TARVO_FUZZERS "Build the fuzzers (clang)" OFF)
option(TARVO_COMPLETE "A test that this build leaves no source file out" OFF)
option(TARVO_INTERFACE_DEBUG "Debug information of libtarvo's interface, to compare it with that of other builds" OFF)
option(TARVO_WARNINGS_AS_ERRORS "Stop at the first warning" OFF)
set(TARVO_SANITIZE "" CACHE STRING "Sanitizers for everything, as -fsanitize takes them: address,undefined")
