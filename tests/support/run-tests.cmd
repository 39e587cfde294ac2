@echo off
rem Runs the Windows tests of Orvane Diagnostics from the folder this file is
rem in, on a machine without build tools: each test program with the filters
rem that ctest gives it (tests/CMakeLists.txt), one after the other. Tests
rem whose set-up only Wine allows skip on Windows with their reason. Ends with
rem the line "N passed, N failed"; exit status 1 when a test failed.
rem   run-tests.cmd        every run below
rem   run-tests.cmd RUN    only that run: unit_tests, unit_tests-paris,
rem                        report_tests, reportcheck_tests, e2e_tests,
rem                        e2e_tests-french or e2e_tests-utf8
rem ctest gives some runs their environment: TZ=CET-1CEST,M3.5.0,M10.5.0/3
rem (unit_tests-paris), LC_ALL=fr_FR.UTF-8 (e2e_tests-french), C.UTF-8
rem (e2e_tests-utf8). Wine takes a process's time zone and locale from its
rem Unix environment, which a "set" here does not reach, so this file sets
rem nothing: tests whose machine is not as they need skip with the reason.
setlocal
cd /d "%~dp0"
set only=%~1
set passed=0
set failed=0
set skipped=0
rem A folder of this call's own. Two calls started close together can draw
rem the same random number (Wine's cmd did, and then wrote over the first
rem call's logs): a name already taken is drawn again, a few times at most.
rem Whether the folder is there is asked, not mkdir's status, which Wine's
rem cmd leaves at 0 for a folder that exists.
set tries=0
:newlogs
set /a tries+=1
set "logs=%TEMP%\orvane-tests-%RANDOM%%RANDOM%"
if not exist "%logs%\" goto :makelogs
if %tries% lss 20 goto :newlogs
:makelogs
mkdir "%logs%" 2>nul
if exist "%logs%\" goto :haslogs
echo Cannot make a folder for the logs under %TEMP%
exit /b 1
:haslogs

call :run unit_tests unit_tests "-FileTimeInParis.*"
call :run unit_tests unit_tests-paris "FileTimeInParis.*"
call :run report_tests report_tests "*"
call :run reportcheck_tests reportcheck_tests "*"
call :run e2e_tests e2e_tests "-FrenchUser*.*:HostileMachine.*:UnicodeFileNames.*"
call :run e2e_tests e2e_tests-french "FrenchUser*.*"
call :run e2e_tests e2e_tests-utf8 "HostileMachine.*:UnicodeFileNames.*"
echo.
echo Logs in %logs%
echo %skipped% skipped
echo %passed% passed, %failed% failed
if not "%failed%"=="0" exit /b 1
exit /b 0

rem :run PROGRAM RUN FILTER
rem Runs PROGRAM.exe with the gtest filter FILTER, its output in RUN.txt, and
rem adds up its gtest summary.
:run
if "%only%"=="" goto :selected
if /i "%only%"=="%~2" goto :selected
goto :eof
:selected
set "log=%logs%\%~2.txt"
"%~1.exe" "--gtest_filter=%~3" > "%log%" 2>&1
set status=%errorlevel%
set runpassed=0
set runfailed=0
set runskipped=0
set finished=0
rem Only gtest's summary lines: "[  PASSED  ] 5 tests." (printed once the
rem program has run every test), "[  FAILED  ] 2 tests, listed below:" and
rem "[  SKIPPED ] 1 test, listed below:". The program's handle on its log
rem may outlive it for a moment (Wine closes it after the process has
rem ended), so the log is copied once it can be read, polling for up to 30
rem seconds. Wine's find takes no quoted file name, hence the folder change;
rem it heads its output with "---------- FILE", which the first token tells
rem apart.
pushd "%logs%"
set waited=0
:copylog
copy /y %~2.txt %~2.copy >nul 2>&1 && goto :readlog
set /a waited+=1
if %waited% geq 30 goto :readlog
ping -n 2 127.0.0.1 >nul
goto :copylog
:readlog
find "[  PASSED  ]" %~2.copy > %~2.summary
find "listed below:" %~2.copy >> %~2.summary
for /f "usebackq tokens=1,2,4" %%a in ("%~2.summary") do (
  if "%%a%%b"=="[PASSED" set finished=1
  if "%%a%%b"=="[PASSED" set /a runpassed+=%%c
  if "%%a%%b"=="[FAILED" set /a runfailed+=%%c
  if "%%a%%b"=="[SKIPPED" set /a runskipped+=%%c
)
del %~2.summary %~2.copy
popd
rem A program that failed without saying which test did, or never reached
rem its summary (it crashed, hung up, or could not start), counts as one
rem failure.
if "%finished%"=="0" set status=1
if not "%status%"=="0" if "%runfailed%"=="0" set runfailed=1
set /a passed+=runpassed
set /a failed+=runfailed
set /a skipped+=runskipped
echo %~2: %runpassed% passed, %runfailed% failed, %runskipped% skipped
goto :eof
