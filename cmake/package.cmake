# Debian packages, one a component: libveska1 and libveska-dev, the same of the workshop,
# and veska.
set(CPACK_GENERATOR DEB)
set(CPACK_PACKAGE_NAME veska)
set(CPACK_PACKAGE_VENDOR "the veska maintainers")
set(CPACK_PACKAGE_DESCRIPTION_SUMMARY "") # each package has its own
set(CPACK_PACKAGE_CONTACT "the veska maintainers <maintainers@veska.invalid>")
set(CPACK_PACKAGE_DIRECTORY ${PROJECT_BINARY_DIR}/packages)
set(CPACK_STRIP_FILES ON)
set(CPACK_INSTALL_DEFAULT_DIRECTORY_PERMISSIONS
    OWNER_READ OWNER_WRITE OWNER_EXECUTE GROUP_READ GROUP_EXECUTE WORLD_READ WORLD_EXECUTE)

set(CPACK_DEB_COMPONENT_INSTALL ON)
set(CPACK_COMPONENTS_ALL runtime development workshop workshop_development tool)
set(CPACK_COMPONENTS_GROUPING IGNORE)
set(CPACK_DEBIAN_FILE_NAME DEB-DEFAULT)
set(CPACK_DEBIAN_PACKAGE_RELEASE 1)
set(CPACK_DEBIAN_PACKAGE_PRIORITY optional)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS ON)
set(CPACK_DEBIAN_PACKAGE_SHLIBDEPS_PRIVATE_DIRS ${PROJECT_BINARY_DIR}
    ${PROJECT_BINARY_DIR}/workshop)
set(CPACK_DEBIAN_ENABLE_COMPONENT_DEPENDS ON)
set(CPACK_DEBIAN_PACKAGE_CONTROL_STRICT_PERMISSION ON)

set(about
    "veska reads, edits, completes and writes the file that says what is on a
disc recorded in the DVD Video Recording format: its programs, play lists,
still pictures, time maps and texts.
.")
set(about_development
    "This package contains the headers, the static library and the files that
CMake and pkg-config find it by.")

set(CPACK_DEBIAN_RUNTIME_PACKAGE_NAME libveska${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_RUNTIME_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_RUNTIME_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/triggers ${PROJECT_BINARY_DIR}/debian/libveska/shlibs)
set(CPACK_COMPONENT_RUNTIME_DESCRIPTION
    "library for DVD Video Recording management files
${about}
This package contains the shared library.")

set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_NAME libveska-dev)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkgconf")
set(CPACK_COMPONENT_DEVELOPMENT_DEPENDS runtime)
set(CPACK_COMPONENT_DEVELOPMENT_DESCRIPTION
    "library for DVD Video Recording management files (development)
${about}
${about_development}")

set(CPACK_DEBIAN_WORKSHOP_PACKAGE_NAME libveska-workshop${PROJECT_VERSION_MAJOR})
set(CPACK_DEBIAN_WORKSHOP_PACKAGE_SECTION libs)
set(CPACK_DEBIAN_WORKSHOP_PACKAGE_CONTROL_EXTRA
    ${PROJECT_SOURCE_DIR}/cmake/debian/triggers ${PROJECT_BINARY_DIR}/debian/libveska-workshop/shlibs)
set(CPACK_COMPONENT_WORKSHOP_DEPENDS runtime)
set(CPACK_COMPONENT_WORKSHOP_DESCRIPTION
    "check and repair DVD Video Recording management files
${about}
This package contains the shared library that checks, salvages, edits and
draws such files, and turns them into JSON and back.")

set(CPACK_DEBIAN_WORKSHOP_DEVELOPMENT_PACKAGE_NAME libveska-workshop-dev)
set(CPACK_DEBIAN_WORKSHOP_DEVELOPMENT_PACKAGE_SECTION libdevel)
set(CPACK_DEBIAN_WORKSHOP_DEVELOPMENT_PACKAGE_SUGGESTS "cmake, pkgconf")
set(CPACK_COMPONENT_WORKSHOP_DEVELOPMENT_DEPENDS workshop development)
set(CPACK_COMPONENT_WORKSHOP_DEVELOPMENT_DESCRIPTION
    "check and repair DVD Video Recording management files (development)
${about}
${about_development}")

set(CPACK_DEBIAN_TOOL_PACKAGE_NAME veska)
set(CPACK_DEBIAN_TOOL_PACKAGE_SECTION utils)
set(CPACK_COMPONENT_TOOL_DEPENDS runtime workshop)
set(CPACK_COMPONENT_TOOL_DESCRIPTION
    "show and edit DVD Video Recording management files
${about}
This package contains the command line tool.")

# What Debian asks of every package beside its files.
set(control ${PROJECT_SOURCE_DIR}/cmake/debian)
set(made ${PROJECT_BINARY_DIR}/debian)
foreach(library libveska libveska-workshop)
  configure_file(${control}/shlibs.in ${made}/${library}/shlibs @ONLY)
endforeach()
configure_file(${control}/changelog.in ${made}/changelog.Debian @ONLY)
configure_file(${PROJECT_SOURCE_DIR}/CHANGELOG.md ${made}/changelog COPYONLY)
foreach(file changelog changelog.Debian)
  add_custom_command(
    OUTPUT ${made}/${file}.gz
    COMMAND gzip -9nkf ${made}/${file}
    DEPENDS ${made}/${file}
    VERBATIM)
endforeach()
set(changelogs ${made}/changelog.gz ${made}/changelog.Debian.gz)
add_custom_target(veska_changelogs ALL DEPENDS ${changelogs})

foreach(component RUNTIME DEVELOPMENT WORKSHOP WORKSHOP_DEVELOPMENT TOOL)
  set(doc_dir ${CMAKE_INSTALL_DATADIR}/doc/${CPACK_DEBIAN_${component}_PACKAGE_NAME})
  string(TOLOWER ${component} component)
  install(FILES ${changelogs} DESTINATION ${doc_dir} COMPONENT ${component})
  install(FILES LICENSE DESTINATION ${doc_dir} RENAME copyright COMPONENT ${component})
endforeach()

include(CPack)
