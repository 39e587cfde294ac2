# GoogleTest comes from Debian's source package (apt-get install googletest)
# and is built with the project, for whichever target is being built.
set(DIAG_GTEST_SOURCE_DIR /usr/src/googletest CACHE PATH "GoogleTest sources")
set(gtest_force_shared_crt OFF CACHE BOOL "" FORCE)
set(INSTALL_GTEST OFF CACHE BOOL "" FORCE)
set(BUILD_GMOCK OFF CACHE BOOL "" FORCE)
add_subdirectory(${DIAG_GTEST_SOURCE_DIR} ${CMAKE_BINARY_DIR}/googletest EXCLUDE_FROM_ALL)
include(GoogleTest)
