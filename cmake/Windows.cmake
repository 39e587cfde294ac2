# Windows target settings shared by the program and its tests.
add_compile_definitions(UNICODE _UNICODE NOMINMAX _WIN32_WINNT=0x0A00 WINVER=0x0A00)
add_compile_options(-Wall -Wextra)
# One self-contained exe: no MinGW runtime DLLs next to it.
add_link_options(-static)
