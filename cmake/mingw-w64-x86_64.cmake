# Cross-build for 64-bit Windows with Debian's MinGW-w64 (POSIX thread model).
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR x86_64)

set(TOOLCHAIN_PREFIX x86_64-w64-mingw32)
if(CMAKE_HOST_WIN32)
  # On Windows (MSYS2's MinGW64 shell) the compilers are on the PATH under
  # their plain names and the tests run as they are.
  set(CMAKE_C_COMPILER   gcc)
  set(CMAKE_CXX_COMPILER g++)
  set(CMAKE_RC_COMPILER  windres)
  return()
endif()
set(CMAKE_C_COMPILER   ${TOOLCHAIN_PREFIX}-gcc-posix)
set(CMAKE_CXX_COMPILER ${TOOLCHAIN_PREFIX}-g++-posix)
set(CMAKE_RC_COMPILER  ${TOOLCHAIN_PREFIX}-windres)

set(CMAKE_FIND_ROOT_PATH /usr/${TOOLCHAIN_PREFIX})
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)

# Test executables run under Wine; ctest and gtest_discover_tests use this.
# scripts/wine-run.sh starts a program again when Wine ended it before it
# ran (see there).
find_program(WINE_PROGRAM NAMES wine wine64 REQUIRED)
find_program(BASH_PROGRAM NAMES bash REQUIRED)
set(CMAKE_CROSSCOMPILING_EMULATOR ${BASH_PROGRAM} ${CMAKE_CURRENT_LIST_DIR}/../scripts/wine-run.sh ${WINE_PROGRAM})
