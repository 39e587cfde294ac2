# SQLite, embedded in reportcheck for both builds: the official amalgamation
# that scripts/deps.sh unpacks into deps/sqlite/ (pinned, checksummed; see
# there and README). One C library, with the options a single-threaded tool
# that opens its own files wants.
set(DIAG_SQLITE_DIR ${PROJECT_SOURCE_DIR}/deps/sqlite)
if(NOT EXISTS ${DIAG_SQLITE_DIR}/sqlite3.c)
  message(FATAL_ERROR "SQLite's amalgamation is missing from deps/sqlite: run scripts/deps.sh (make deps)")
endif()

add_library(diag_sqlite STATIC ${DIAG_SQLITE_DIR}/sqlite3.c)
target_include_directories(diag_sqlite SYSTEM PUBLIC ${DIAG_SQLITE_DIR})
target_compile_definitions(diag_sqlite PRIVATE
  # reportcheck uses one connection at a time from one thread.
  SQLITE_THREADSAFE=0
  # Nothing loads code into the tool: no extensions.
  SQLITE_OMIT_LOAD_EXTENSION
  # Strings in double quotes are identifiers only, as the SQL standard has
  # it, so that a rule with a typo'd column fails instead of comparing text.
  SQLITE_DQS=0
  SQLITE_DEFAULT_MEMSTATUS=0
  SQLITE_DEFAULT_FOREIGN_KEYS=1
  SQLITE_LIKE_DOESNT_MATCH_BLOBS
  SQLITE_OMIT_DEPRECATED
  SQLITE_OMIT_SHARED_CACHE
  SQLITE_USE_ALLOCA
)
# The library's own code is not ours to warn about, and it is tested by its
# makers: built optimised and uninstrumented in every preset, so that the
# sanitizer and fuzz builds spend their time on our code.
if(MSVC)
  target_compile_options(diag_sqlite PRIVATE /W0 /O2)
else()
  target_compile_options(diag_sqlite PRIVATE -w -O2 -g0 -fno-sanitize=all)
endif()
if(NOT WIN32)
  target_link_libraries(diag_sqlite PUBLIC ${CMAKE_DL_LIBS} m)
endif()
