# cmake -DBINARY=path -P CheckUninstrumented.cmake: fails, naming what it
# found, when the program is instrumented (AddressSanitizer, UBSan): linked to
# their libraries or carrying their symbols. The build of the reportcheck that
# users run (the "native" preset) runs it after every link.
find_program(DIAG_READELF readelf REQUIRED)
find_program(DIAG_NM nm REQUIRED)
execute_process(COMMAND ${DIAG_READELF} -d ${BINARY} OUTPUT_VARIABLE dynamic RESULT_VARIABLE failed)
if(failed)
  message(FATAL_ERROR "${BINARY}: readelf could not read it")
endif()
execute_process(COMMAND ${DIAG_NM} -a ${BINARY} OUTPUT_VARIABLE symbols ERROR_QUIET)
execute_process(COMMAND ${DIAG_NM} -D ${BINARY} OUTPUT_VARIABLE dynamicSymbols ERROR_QUIET)
set(found "")
string(REGEX MATCHALL "lib(asan|ubsan|tsan|lsan)[^]]*" libraries "${dynamic}")
list(APPEND found ${libraries})
string(REGEX MATCH "__(asan|ubsan)_[A-Za-z0-9_]+" symbol "${symbols}\n${dynamicSymbols}")
if(symbol)
  list(APPEND found ${symbol})
endif()
if(found)
  list(JOIN found ", " foundText)
  message(FATAL_ERROR "${BINARY} is instrumented (${foundText}): the reportcheck users run must be "
                      "the optimised build without sanitizers")
endif()
message(STATUS "${BINARY}: not instrumented")
