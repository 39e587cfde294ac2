# The direction of the program's layers, checked over the include graph.
#
#   app -> diagwin -> collect -> format      collect -> w32      ovsystem -> w32
#   reportcheck -> reader -> format
#
# format/ is the report's pure form, shared by both programs (no <windows.h>);
# collect/ holds the Windows collectors that fill its records; reader/ reads
# saved reports back and serves reportcheck only: the program never reaches
# it. A folder of src/ may include its own headers and those of the layers
# below it; every layer may include lang/ (the interface language), which
# includes nothing of ours. An include against the direction fails the configuration,
# so that a back-arrow never reaches a build. Each layer is also a library of
# its own (src/CMakeLists.txt) that links only the layers below it.
#
# Used two ways: include()d by the top CMakeLists.txt, which checks src/, and
# as a script, which the tests run on src/ and on a tree with a back-arrow:
#   cmake -DDIAG_LAYERS_ROOT=<dir with src/> -P cmake/Layers.cmake

if(CMAKE_SCRIPT_MODE_FILE)
  cmake_minimum_required(VERSION 3.21)
endif()

set(DIAG_LAYERS lang w32 ovsystem format collect diagwin app reader reportcheck)
set(DIAG_LAYER_USES_lang        lang)
set(DIAG_LAYER_USES_w32         w32 lang)
set(DIAG_LAYER_USES_ovsystem    ovsystem w32 lang)
set(DIAG_LAYER_USES_format      format lang)
set(DIAG_LAYER_USES_collect     collect format w32 lang)
set(DIAG_LAYER_USES_diagwin     diagwin collect format ovsystem w32 lang)
set(DIAG_LAYER_USES_app         app diagwin collect format ovsystem w32 lang)
set(DIAG_LAYER_USES_reader      reader format lang)
# The report checker reads reports with the reader and the shared format,
# and nothing else.
set(DIAG_LAYER_USES_reportcheck reportcheck reader format lang)
# Folders whose every file is pure: built for the host too, where no Windows
# header exists, so a file's folder alone says whether it may ask the system.
set(DIAG_PURE_LAYERS lang format reader)

# Sets `result` to one line per include against the direction, and per
# <windows.h> in a pure folder: "<file> includes <header>", files and headers
# relative to `root`/src.
function(diag_find_back_arrows root result)
  set(found "")
  foreach(layer IN LISTS DIAG_LAYERS)
    file(GLOB_RECURSE files RELATIVE "${root}/src" "${root}/src/${layer}/*.h" "${root}/src/${layer}/*.cpp")
    list(SORT files)
    foreach(file IN LISTS files)
      # Quoted or angled, from src/ or relative to the file ("../app/x.h").
      file(STRINGS "${root}/src/${file}" includes REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<][^\">]*/")
      foreach(line IN LISTS includes)
        string(REGEX REPLACE "^[ \t]*#[ \t]*include[ \t]*[\"<]([^\">]+)[\">].*" "\\1" header "${line}")
        if(header MATCHES "^\\.\\.?/")
          get_filename_component(folder "${file}" DIRECTORY)
          cmake_path(SET resolved NORMALIZE "${folder}/${header}")
          set(header "${resolved}")
        endif()
        string(REGEX REPLACE "/.*" "" target "${header}")
        if(target IN_LIST DIAG_LAYERS AND NOT target IN_LIST DIAG_LAYER_USES_${layer})
          list(APPEND found "${file} includes ${header}")
        endif()
      endforeach()
      if(layer IN_LIST DIAG_PURE_LAYERS)
        file(STRINGS "${root}/src/${file}" windows REGEX "^[ \t]*#[ \t]*include[ \t]*[\"<][Ww]indows\\.h[\">]")
        if(windows)
          list(APPEND found "${file} includes windows.h")
        endif()
      endif()
    endforeach()
  endforeach()
  set(${result} "${found}" PARENT_SCOPE)
endfunction()

function(diag_check_layers root)
  diag_find_back_arrows("${root}" arrows)
  if(arrows)
    list(JOIN arrows "\n  " text)
    message(FATAL_ERROR "Includes against the direction of the layers (cmake/Layers.cmake):\n  ${text}")
  endif()
endfunction()

if(CMAKE_SCRIPT_MODE_FILE AND DIAG_LAYERS_ROOT)
  # A root given relative to the current folder, or one without src/, would
  # otherwise find no files and pass.
  get_filename_component(root "${DIAG_LAYERS_ROOT}" ABSOLUTE)
  if(NOT IS_DIRECTORY "${root}/src")
    message(FATAL_ERROR "No src folder in ${DIAG_LAYERS_ROOT}")
  endif()
  diag_check_layers("${root}")
  message(STATUS "Layers point one way in ${DIAG_LAYERS_ROOT}/src")
endif()
