# Files that only turn values into text. They include no <windows.h> and are
# built for Windows and for the Linux host (where they run under sanitizers).
set(DIAG_PURE_SOURCES
  src/lang/Language.cpp
  src/app/CommandLine.cpp
  src/app/Title.cpp
  src/report/ReportChecksum.cpp
  src/report/ReportVerdict.cpp
  src/report/EntryText.cpp
  src/report/AdapterText.cpp
  src/report/ReportText.cpp
  src/report/RegistryValueText.cpp
  src/report/InstallationText.cpp
  src/report/InstallationRecord.cpp
  src/report/ReportModelText.cpp
  src/report/ReportParse.cpp
  src/report/ReportRender.cpp
  src/report/ReportJson.cpp
  src/report/ReportDiff.cpp
  src/report/SystemSections.cpp
  src/diagwin/SaveLocation.cpp
  src/report/ViewText.cpp
)
list(TRANSFORM DIAG_PURE_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/)

# Unit tests of those files; they run natively and under Wine.
set(DIAG_PURE_TESTS
  tests/lang/Language_test.cpp
  tests/app/CommandLine_test.cpp
  tests/app/Title_test.cpp
  tests/report/ReportChecksum_test.cpp
  tests/report/ReportVerdict_test.cpp
  tests/report/EntryText_test.cpp
  tests/report/AdapterText_test.cpp
  tests/report/ReportText_test.cpp
  tests/report/RegistryValueText_test.cpp
  tests/report/InstallationText_test.cpp
  tests/report/InstallationRecord_test.cpp
  tests/report/ReportModel_test.cpp
  tests/report/SystemSections_test.cpp
  tests/diagwin/SaveLocation_test.cpp
  tests/report/ViewText_test.cpp
  tests/w32/GrowingBuffer_test.cpp
)
list(TRANSFORM DIAG_PURE_TESTS PREPEND ${PROJECT_SOURCE_DIR}/)

# JSON: Debian's header-only nlohmann-json3-dev. Its header lives in
# /usr/include, which must not reach the Windows build (it would pull in the
# Linux headers): the targets see a folder of their own that holds nothing
# but a link to the nlohmann folder.
find_path(DIAG_NLOHMANN_PARENT nlohmann/json.hpp PATHS /usr/include
  NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH REQUIRED)
set(DIAG_JSON_INCLUDE ${CMAKE_BINARY_DIR}/json-include)
file(MAKE_DIRECTORY ${DIAG_JSON_INCLUDE})
file(CREATE_LINK ${DIAG_NLOHMANN_PARENT}/nlohmann ${DIAG_JSON_INCLUDE}/nlohmann SYMBOLIC)

function(diag_use_json target)
  target_include_directories(${target} SYSTEM PUBLIC ${DIAG_JSON_INCLUDE})
endfunction()

# The pure sources as one library per layer, each linking the layers below it
# (the direction is in cmake/Layers.cmake): diag_pure_lang, diag_pure_report,
# diag_pure_diagwin, diag_pure_app; diag_pure is all of them. The Windows
# build's layer libraries link their own.
function(diag_add_pure_libraries)
  set(layers lang w32 report diagwin app)
  set(remaining ${DIAG_PURE_SOURCES})
  set(below "")
  add_library(diag_pure INTERFACE)
  foreach(layer IN LISTS layers)
    set(sources ${DIAG_PURE_SOURCES})
    list(FILTER sources INCLUDE REGEX "/src/${layer}/")
    if(NOT sources)
      continue()
    endif()
    list(REMOVE_ITEM remaining ${sources})
    add_library(diag_pure_${layer} STATIC ${sources})
    target_include_directories(diag_pure_${layer} PUBLIC ${PROJECT_SOURCE_DIR}/src)
    diag_use_json(diag_pure_${layer})
    target_link_libraries(diag_pure_${layer} PUBLIC ${below})
    target_link_libraries(diag_pure INTERFACE diag_pure_${layer})
    set(below diag_pure_${layer})
  endforeach()
  if(remaining)
    message(FATAL_ERROR "Pure sources outside the layers (${layers}): ${remaining}")
  endif()
endfunction()
