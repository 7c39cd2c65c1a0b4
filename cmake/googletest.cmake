# GTest::gtest_main: the installed one, or, where the build is for another platform than the one it
# runs on or with another standard library, built from its source.
if(NOT TARGET GTest::gtest_main)
  if(CMAKE_CROSSCOMPILING OR VESKA_GTEST_FROM_SOURCE)
    set(VESKA_GTEST_SOURCE_DIR /usr/src/googletest CACHE PATH "Source of GoogleTest")
    set(BUILD_GMOCK OFF)
    set(INSTALL_GTEST OFF)
    set(BUILD_SHARED_LIBS OFF)
    add_subdirectory(${VESKA_GTEST_SOURCE_DIR} ${PROJECT_BINARY_DIR}/googletest EXCLUDE_FROM_ALL SYSTEM)
  else()
    find_package(GTest REQUIRED)
  endif()
endif()
