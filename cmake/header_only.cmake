# veska_json_header and veska_cli_header: nlohmann_json and CLI11, both header only. A build for
# another platform gets them through links of their own, so that nothing else of this system's
# headers comes along.
function(veska_header_only target package imported folder header)
  if(TARGET ${target})
    return()
  endif()
  add_library(${target} INTERFACE)
  if(CMAKE_CROSSCOMPILING)
    find_path(${target}_DIR ${folder}/${header} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH REQUIRED)
    set(links ${PROJECT_BINARY_DIR}/${target})
    file(MAKE_DIRECTORY ${links})
    file(CREATE_LINK ${${target}_DIR}/${folder} ${links}/${folder} SYMBOLIC)
    target_include_directories(${target} SYSTEM INTERFACE ${links})
  else()
    find_package(${package} REQUIRED)
    target_link_libraries(${target} INTERFACE ${imported})
  endif()
endfunction()
