# The library, static and shared. `veska::veska` is the one that BUILD_SHARED_LIBS asks for; the
# other one is made by `all` only where both are installed.
file(GLOB veska_headers CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/include/veska/*.h)
file(GLOB veska_sources CONFIGURE_DEPENDS ${PROJECT_SOURCE_DIR}/src/*/*.cpp)
if(WIN32)
  list(FILTER veska_sources EXCLUDE REGEX "_posix\\.cpp$")
else()
  list(FILTER veska_sources EXCLUDE REGEX "_windows\\.cpp$")
endif()
function(veska_add_library target kind)
  add_library(${target} ${kind} ${veska_sources})
  add_library(veska::${target} ALIAS ${target})
  veska_own_target(${target})
  target_include_directories(
    ${target}
    PUBLIC $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/include>
           $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>
    PRIVATE ${PROJECT_SOURCE_DIR}/src)
  set_target_properties(
    ${target}
    PROPERTIES OUTPUT_NAME veska
               POSITION_INDEPENDENT_CODE ON
               CXX_VISIBILITY_PRESET hidden
               VISIBILITY_INLINES_HIDDEN ON)
endfunction()

veska_add_library(veska_static STATIC)
veska_add_library(veska_shared SHARED)
if(MSVC OR EMSCRIPTEN)
  set_target_properties(veska_static PROPERTIES OUTPUT_NAME veska_static)
endif()
set_target_properties(
  veska_shared
  PROPERTIES VERSION ${PROJECT_VERSION}
             SOVERSION ${PROJECT_VERSION_MAJOR}
             EXPORT_COMPILE_COMMANDS OFF) # one command a source is enough for clang-tidy
target_compile_definitions(
  veska_shared
  PUBLIC VESKA_SHARED
  PRIVATE VESKA_BUILDING)
if(UNIX AND NOT APPLE)
  set(exports ${PROJECT_SOURCE_DIR}/cmake/exports.map)
  target_link_options(veska_shared PRIVATE LINKER:--version-script=${exports})
  set_target_properties(veska_shared PROPERTIES LINK_DEPENDS ${exports})
endif()

if(BUILD_SHARED_LIBS)
  set(chosen veska_shared)
  set(other veska_static)
else()
  set(chosen veska_static)
  set(other veska_shared)
endif()
if(NOT VESKA_INSTALL)
  set_target_properties(${other} PROPERTIES EXCLUDE_FROM_ALL ON)
endif()
add_library(veska INTERFACE)
add_library(veska::veska ALIAS veska)
target_link_libraries(veska INTERFACE ${chosen})
