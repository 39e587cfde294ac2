@echo off
rem Runs the Windows tests of Orvane Diagnostics from the folder this file is
rem in, on a machine without build tools: each test program with the filters
rem and environment that ctest gives it (tests/CMakeLists.txt), one after the
rem other. Tests whose set-up only Wine allows skip on Windows with their
rem reason. Ends with the line "N passed, N failed"; exit status 1 when a
rem test failed.
rem   run-tests.cmd        every run below
rem   run-tests.cmd RUN    only that run: unit_tests, unit_tests-paris,
rem                        report_tests, reportcheck_tests, e2e_tests,
rem                        e2e_tests-french or e2e_tests-utf8
setlocal
cd /d "%~dp0"
set only=%~1
set passed=0
set failed=0
set skipped=0
set "logs=%TEMP%\orvane-tests-%RANDOM%%RANDOM%"
mkdir "%logs%"

call :run unit_tests unit_tests "-FileTimeInParis.*"
rem Wine takes the time zone from each process's Unix TZ.
call :run unit_tests unit_tests-paris "FileTimeInParis.*" TZ "CET-1CEST,M3.5.0,M10.5.0/3"
call :run report_tests report_tests "*"
call :run reportcheck_tests reportcheck_tests "*"
rem Under Wine a program takes its user locale from LC_ALL.
call :run e2e_tests e2e_tests "-FrenchUser*.*:HostileMachine.*:UnicodeFileNames.*" LC_ALL "en_US.UTF-8"
call :run e2e_tests e2e_tests-french "FrenchUser*.*" LC_ALL "fr_FR.UTF-8"
call :run e2e_tests e2e_tests-utf8 "HostileMachine.*:UnicodeFileNames.*" LC_ALL "C.UTF-8"

echo.
echo Logs in %logs%
echo %skipped% skipped
echo %passed% passed, %failed% failed
if not "%failed%"=="0" exit /b 1
exit /b 0

rem :run PROGRAM RUN FILTER [VARIABLE VALUE]
rem Runs PROGRAM.exe with the gtest filter FILTER (and VARIABLE=VALUE in its
rem environment), its output in RUN.txt, and adds up its gtest summary.
:run
if "%only%"=="" goto :selected
if /i "%only%"=="%~2" goto :selected
goto :eof
:selected
set "log=%logs%\%~2.txt"
if not "%~4"=="" set "%~4=%~5"
"%~1.exe" "--gtest_filter=%~3" > "%log%" 2>&1
set status=%errorlevel%
if not "%~4"=="" set "%~4="
set runpassed=0
set runfailed=0
set runskipped=0
rem Only gtest's summary lines: "[  PASSED  ] 5 tests.",
rem "[  FAILED  ] 2 tests, listed below:", "[  SKIPPED ] 1 test, listed below:".
find "[  PASSED  ]" < "%log%" > "%log%.summary"
find "listed below:" < "%log%" >> "%log%.summary"
for /f "usebackq tokens=2,4" %%a in ("%log%.summary") do (
  if "%%a"=="PASSED" set /a runpassed+=%%b
  if "%%a"=="FAILED" set /a runfailed+=%%b
  if "%%a"=="SKIPPED" set /a runskipped+=%%b
)
del "%log%.summary"
rem A program that failed without saying which test did (it crashed, or
rem could not start) counts as one failure.
if not "%status%"=="0" if "%runfailed%"=="0" set runfailed=1
set /a passed+=runpassed
set /a failed+=runfailed
set /a skipped+=runskipped
echo %~2: %runpassed% passed, %runfailed% failed, %runskipped% skipped
goto :eof
