# WebAssembly for a browser, by Debian's Emscripten: exceptions are the machine's own, so that no
# script of the compiler stands between page and library.
include(/usr/share/emscripten/cmake/Modules/Platform/Emscripten.cmake)
set(CMAKE_CXX_FLAGS_INIT "-fwasm-exceptions -flto")
set(CMAKE_CXX_FLAGS_MINSIZEREL_INIT "-Oz -DNDEBUG")
set(CMAKE_EXE_LINKER_FLAGS_INIT "-fwasm-exceptions -flto -Oz")
