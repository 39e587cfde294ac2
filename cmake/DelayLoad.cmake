# System libraries other than kernel32, the C runtime and advapi32 are
# delay-loaded.
#
# At start the loader resolves an exe's static imports, and their own imports,
# before any of the program's code runs, and it looks for a library that is not
# one of Windows' known DLLs in the program's own folder first: a file planted
# there under that name would run with the user's rights. Known DLLs are safe
# on Windows, but not every loader honours that list for the imports of a
# system library (Wine's user32 imports version.dll and takes it from beside
# the program when told to prefer native files), so only the three libraries
# whose imports are all safe are static. The rest is loaded on its first call,
# after the entry point has restricted the library search to the system
# directory (src/app/Main.cpp), and the program's delay-load hook
# (src/w32/DelayLoadHook.cpp) asks for the system directory explicitly besides.
#
# MinGW-w64: `dlltool --output-delaylib` makes the delay-import library from
# a small .def file in cmake/delayload/ that lists exactly the functions the
# program calls. A new call into one of these libraries needs its name added
# there: otherwise the linker takes it from the ordinary import library, and
# the ImportTable test and `make dist` refuse the exe. MinGW's helper,
# __delayLoadHelper2 (libmingwex), loads the library with LoadLibraryA, which
# honours the restricted search, after the program's hook. MSVC: /DELAYLOAD
# with delayimp.lib.
#
# diag_delay_load_libraries(<target> <name>...) links <target> with the
# delay-import libraries of the named system libraries (names of the .def
# files in cmake/delayload/).
set(DIAG_DELAYLOAD_DEFS ${CMAKE_CURRENT_LIST_DIR}/delayload)

if(MINGW)
  # A cross toolchain names dlltool after its target; MSYS2's MinGW shell has
  # it as plain dlltool beside gcc. CMake has usually found the toolchain's
  # own already (CMAKE_DLLTOOL), which is then the one to take: a plain
  # dlltool first on the PATH could belong to another toolchain.
  if(NOT DIAG_DLLTOOL AND CMAKE_DLLTOOL AND EXISTS "${CMAKE_DLLTOOL}")
    set(DIAG_DLLTOOL "${CMAKE_DLLTOOL}" CACHE FILEPATH "dlltool that makes the delay-import libraries")
  endif()
  get_filename_component(_diag_compiler_dir "${CMAKE_C_COMPILER}" DIRECTORY)
  find_program(DIAG_DLLTOOL NAMES ${TOOLCHAIN_PREFIX}-dlltool x86_64-w64-mingw32-dlltool dlltool
    HINTS "${_diag_compiler_dir}" REQUIRED)
endif()

function(diag_delay_load_libraries target)
  foreach(name IN LISTS ARGN)
    if(MSVC)
      target_link_libraries(${target} PUBLIC ${name} delayimp)
      target_link_options(${target} INTERFACE /DELAYLOAD:${name}.dll)
      continue()
    endif()
    set(lib ${CMAKE_BINARY_DIR}/delayload/lib${name}-delay.a)
    if(NOT TARGET diag_delay_${name})
      set(def ${DIAG_DELAYLOAD_DEFS}/${name}.def)
      add_custom_command(OUTPUT ${lib}
        COMMAND ${CMAKE_COMMAND} -E make_directory ${CMAKE_BINARY_DIR}/delayload
        COMMAND ${DIAG_DLLTOOL} --input-def ${def} --output-delaylib ${lib}
        DEPENDS ${def}
        COMMENT "Delay-import library for ${name}.dll")
      add_custom_target(diag_delay_${name} DEPENDS ${lib})
    endif()
    target_link_libraries(${target} PUBLIC ${lib})
    add_dependencies(${target} diag_delay_${name})
  endforeach()
endfunction()
