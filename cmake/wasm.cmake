# WebAssembly by Debian's Emscripten, run by Node with the host's files. A later Node's own `fetch`
# would not take the name of a file, which this Emscripten hands to it.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_CROSSCOMPILING_EMULATOR node --no-experimental-fetch --stack-size=8000)
set(CMAKE_CXX_FLAGS_INIT "-fexceptions")
set(CMAKE_EXE_LINKER_FLAGS_INIT
    "-fexceptions -sNODERAWFS=1 -sALLOW_MEMORY_GROWTH=1 -sEXIT_RUNTIME=1 -sTOTAL_STACK=8MB")
