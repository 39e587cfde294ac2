# Windows target settings shared by the program and its tests.
add_compile_definitions(UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0A00 WINVER=0x0A00)
if(MINGW)
  add_compile_options(-Wall -Wextra)
  # One self-contained exe: no MinGW runtime DLLs next to it.
  add_link_options(-static)
else()
  add_compile_options(/W4 /utf-8 /permissive-)
  add_compile_definitions(_CRT_SECURE_NO_WARNINGS)
  set(CMAKE_MSVC_RUNTIME_LIBRARY "MultiThreaded$<$<CONFIG:Debug>:Debug>")
endif()

include(${CMAKE_CURRENT_LIST_DIR}/DelayLoad.cmake)
