# Files that only turn values into text. They include no <windows.h> and are
# built for Windows and for the Linux host (where they run under sanitizers).
set(DIAG_PURE_SOURCES
  src/app/CommandLine.cpp
  src/app/Language.cpp
  src/app/Title.cpp
  src/report/ReportChecksum.cpp
)
list(TRANSFORM DIAG_PURE_SOURCES PREPEND ${PROJECT_SOURCE_DIR}/)

# Unit tests of those files; they run natively and under Wine.
set(DIAG_PURE_TESTS
  tests/app/CommandLine_test.cpp
  tests/app/Language_test.cpp
  tests/app/Title_test.cpp
  tests/report/ReportChecksum_test.cpp
)
list(TRANSFORM DIAG_PURE_TESTS PREPEND ${PROJECT_SOURCE_DIR}/)
