# The machine of browsers: WebAssembly, 32-bit little-endian with vectors, by Debian's Emscripten. Programs are run by Node,
# the library by web/.

set(EMSCRIPTEN_SYSTEM_PROCESSOR wasm32)
# What it was installed with, and no other: the compiler's folder is the same for users, who cannot write to it.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
list(APPEND CMAKE_MODULE_PATH "${CMAKE_CURRENT_LIST_DIR}/webassembly")
set(exceptions "-fwasm-exceptions -sSUPPORT_LONGJMP=wasm")
set(CMAKE_CXX_FLAGS_INIT "-msimd128 ${exceptions} -isystem ${CMAKE_CURRENT_LIST_DIR}/webassembly")
set(CMAKE_C_FLAGS_INIT "-msimd128 ${exceptions}")
set(CMAKE_EXE_LINKER_FLAGS_INIT "${exceptions}")
# Linking asks Node for a module that lies where not every Node looks for it.
set(CMAKE_CXX_LINKER_LAUNCHER "${CMAKE_COMMAND}" -E env NODE_PATH=/usr/share/nodejs)
# Newer ones fetch files as if they were pages.
set(CMAKE_CROSSCOMPILING_EMULATOR node --no-experimental-fetch)
