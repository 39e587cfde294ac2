# Host build: the pure text logic and its unit tests.
add_compile_options(-Wall -Wextra -Wpedantic)
if(DIAG_SANITIZE)
  add_compile_options(-fsanitize=address,undefined -fno-omit-frame-pointer -fno-sanitize-recover=all)
  add_link_options(-fsanitize=address,undefined)
endif()

diag_add_pure_libraries()

add_executable(pure_tests ${DIAG_PURE_TESTS})
target_link_libraries(pure_tests PRIVATE diag_pure GTest::gtest_main)
gtest_discover_tests(pure_tests TEST_PREFIX "native." DISCOVERY_TIMEOUT 60)

# The fuzz targets (the "fuzz" preset, with clang).
if(DIAG_FUZZ)
  add_subdirectory(${PROJECT_SOURCE_DIR}/tests/fuzz ${CMAKE_BINARY_DIR}/fuzz)
endif()
