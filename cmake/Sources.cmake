# Files that only turn values into text. They include no <windows.h> and are
# built for Windows and for the Linux host (where they run under sanitizers).
set(DIAG_PURE_SOURCES
  src/app/CommandLine.cpp
  src/app/Language.cpp
  src/app/Title.cpp
  src/report/ReportChecksum.cpp
  src/report/ReportVerdict.cpp
  src/report/EntryText.cpp
  src/report/AdapterText.cpp
  src/report/ReportText.cpp
  src/report/RegistryValueText.cpp
  src/report/InstallationText.cpp
  src/diagwin/SaveLocation.cpp
  src/diagwin/ViewText.cpp
)
list(TRANSFORM DIAG_PURE_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/)

# Unit tests of those files; they run natively and under Wine.
set(DIAG_PURE_TESTS
  tests/app/CommandLine_test.cpp
  tests/app/Language_test.cpp
  tests/app/Title_test.cpp
  tests/report/ReportChecksum_test.cpp
  tests/report/ReportVerdict_test.cpp
  tests/report/EntryText_test.cpp
  tests/report/AdapterText_test.cpp
  tests/report/ReportText_test.cpp
  tests/report/RegistryValueText_test.cpp
  tests/report/InstallationText_test.cpp
  tests/diagwin/SaveLocation_test.cpp
  tests/diagwin/ViewText_test.cpp
  tests/w32/GrowingBuffer_test.cpp
)
list(TRANSFORM DIAG_PURE_TESTS PREPEND ${PROJECT_SOURCE_DIR}/)
