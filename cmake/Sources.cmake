# Files that only turn values into text. They include no <windows.h> and are
# built for Windows and for the Linux host (where they run under sanitizers).
set(DIAG_PURE_SOURCES
  src/lang/Language.cpp
  src/app/CommandLine.cpp
  src/app/Title.cpp
  src/format/ReportChecksum.cpp
  src/format/ReportVerdict.cpp
  src/format/TransitDamage.cpp
  src/format/EntryText.cpp
  src/format/AdapterText.cpp
  src/format/ReportText.cpp
  src/format/RegistryValueText.cpp
  src/format/InstallationText.cpp
  src/format/InstallationRecord.cpp
  src/reader/ReportModelText.cpp
  src/reader/ReportTime.cpp
  src/reader/ReportParse.cpp
  src/reader/ReportRender.cpp
  src/reader/ReportJson.cpp
  src/reader/ReportDiff.cpp
  src/reader/TerminalText.cpp
  src/reader/JsonIndent.cpp
  src/reader/ReportRedact.cpp
  src/format/SystemSections.cpp
  src/diagwin/SaveLocation.cpp
  src/format/ViewText.cpp
)
list(TRANSFORM DIAG_PURE_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/)

# Unit tests of those files; they run natively and under Wine.
set(DIAG_PURE_TESTS
  tests/lang/Language_test.cpp
  tests/app/CommandLine_test.cpp
  tests/app/Title_test.cpp
  tests/format/ReportChecksum_test.cpp
  tests/format/ReportVerdict_test.cpp
  tests/format/TransitDamage_test.cpp
  tests/format/EntryText_test.cpp
  tests/format/AdapterText_test.cpp
  tests/format/ReportText_test.cpp
  tests/format/RegistryValueText_test.cpp
  tests/format/InstallationText_test.cpp
  tests/format/InstallationRecord_test.cpp
  tests/reader/ReportModel_test.cpp
  tests/reader/ReportTime_test.cpp
  tests/reader/RoundTrip_test.cpp
  tests/reader/TerminalText_test.cpp
  tests/reader/JsonIndent_test.cpp
  tests/reader/ReportRedact_test.cpp
  tests/format/SystemSections_test.cpp
  tests/diagwin/SaveLocation_test.cpp
  tests/format/ViewText_test.cpp
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

# The pure sources as one library per layer, each linking the pure libraries
# of the layers it may use (cmake/Layers.cmake): diag_pure_lang,
# diag_pure_format, diag_pure_reader, diag_pure_diagwin, diag_pure_app;
# diag_pure is all of them. The program's pure layers never link the reader.
# The Windows build's layer libraries link their own.
function(diag_add_pure_libraries)
  set(layers lang w32 format reader diagwin app)
  set(remaining ${DIAG_PURE_SOURCES})
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
    foreach(used IN LISTS DIAG_LAYER_USES_${layer})
      if(TARGET diag_pure_${used} AND NOT used STREQUAL layer)
        target_link_libraries(diag_pure_${layer} PUBLIC diag_pure_${used})
      endif()
    endforeach()
    target_link_libraries(diag_pure INTERFACE diag_pure_${layer})
  endforeach()
  if(remaining)
    message(FATAL_ERROR "Pure sources outside the layers (${layers}): ${remaining}")
  endif()
endfunction()
