# What `cmake --install` lays down: for each library its headers, both forms and what finds them, and
# the tool.
include(CMakePackageConfigHelpers)

set(cmake_dir ${CMAKE_INSTALL_LIBDIR}/cmake/veska)
# Relative, so that an installed tree can be moved.
set(pc_dir ${CMAKE_INSTALL_FULL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH pc_to_prefix ${pc_dir} ${CMAKE_INSTALL_PREFIX})
file(RELATIVE_PATH pc_to_include ${pc_dir} ${CMAKE_INSTALL_FULL_INCLUDEDIR})

# veska_install(LIBRARY PC-NAME HEADERS RUNTIME DEVELOPMENT): LIBRARY_static, LIBRARY_shared and
# LIBRARY, the headers of a folder, and the components that they belong to.
function(veska_install library pc_name headers runtime development)
  install(
    DIRECTORY ${headers}/
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT ${development}
    FILES_MATCHING
    PATTERN *.h)
  foreach(kind static shared)
    install(
      TARGETS ${library}_${kind}
      EXPORT ${library}_${kind}
      RUNTIME COMPONENT ${runtime}
      LIBRARY COMPONENT ${runtime} NAMELINK_COMPONENT ${development}
      ARCHIVE COMPONENT ${development})
  endforeach()
  # In a set of its own, so that a host that brings the library along can export what links to it.
  install(TARGETS ${library} EXPORT ${library}_chosen)
  foreach(export static shared chosen)
    install(
      EXPORT ${library}_${export}
      NAMESPACE veska::
      FILE ${library}_${export}.cmake
      DESTINATION ${cmake_dir}
      COMPONENT ${development})
  endforeach()
  configure_file(cmake/${pc_name}.pc.in ${PROJECT_BINARY_DIR}/${pc_name}.pc @ONLY)
  install(
    FILES ${PROJECT_BINARY_DIR}/${pc_name}.pc
    DESTINATION ${CMAKE_INSTALL_LIBDIR}/pkgconfig
    COMPONENT ${development})
endfunction()

veska_install(veska veska include runtime development)
if(TARGET veska_workshop)
  veska_install(veska_workshop veska-workshop workshop/include workshop workshop_development)
endif()

configure_package_config_file(
  cmake/veskaConfig.cmake.in ${PROJECT_BINARY_DIR}/veskaConfig.cmake INSTALL_DESTINATION ${cmake_dir})
write_basic_package_version_file(
  ${PROJECT_BINARY_DIR}/veskaConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(
  FILES ${PROJECT_BINARY_DIR}/veskaConfig.cmake ${PROJECT_BINARY_DIR}/veskaConfigVersion.cmake
  DESTINATION ${cmake_dir}
  COMPONENT development)

if(TARGET veska_tool)
  install(TARGETS veska_tool RUNTIME COMPONENT tool)

  # The tool prints its own manual page and completions.
  set(pages ${PROJECT_BINARY_DIR}/pages)
  file(MAKE_DIRECTORY ${pages})
  set(page ${pages}/veska.1)
  add_custom_command(
    OUTPUT ${page} ${pages}/veska ${pages}/_veska
    COMMAND veska_tool help --man > ${page}
    COMMAND veska_tool help --bash > ${pages}/veska
    COMMAND veska_tool help --zsh > ${pages}/_veska
    DEPENDS veska_tool
    VERBATIM)
  if(VESKA_PACKAGE)
    add_custom_command(OUTPUT ${page}.gz COMMAND gzip -9nkf ${page} DEPENDS ${page} VERBATIM)
    set(page ${page}.gz)
  endif()
  add_custom_target(veska_pages ALL DEPENDS ${page})
  install(FILES ${page} DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 COMPONENT tool)
  install(
    FILES ${pages}/veska
    DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions
    COMPONENT tool)
  if(VESKA_PACKAGE)
    set(zsh_dir vendor-completions)
  else()
    set(zsh_dir site-functions)
  endif()
  install(
    FILES ${pages}/_veska
    DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/${zsh_dir}
    COMPONENT tool)
  install(
    FILES docs/tool.md docs/check.md docs/json.md docs/format.md docs/veska.schema.json
    DESTINATION ${CMAKE_INSTALL_DOCDIR}
    COMPONENT tool)
endif()

if(VESKA_PACKAGE)
  include(cmake/package.cmake)
endif()
