@echo off
rem What a support script collects with the system's own tools: the facts of
rem the system report (five WMI values, the network adapters, the two
rem registry keys, the five directories: the program's, the standard one, the
rem registry's and the two shared ones), into the file named by %1.
rem Each command appends on its own: Wine's cmd does not redirect a
rem parenthesised block.
setlocal
set "OUT=%~1"
set "SUITE=%ProgramFiles%\Orvane Software V9"
set "SHARED=%ProgramData%\Orvane Software"
echo Host:> "%OUT%"
wmic computersystem get name >> "%OUT%"
wmic computersystem get domain >> "%OUT%"
echo Windows:>> "%OUT%"
ver >> "%OUT%"
wmic os get version >> "%OUT%"
reg query "HKLM\SOFTWARE\Microsoft\Windows\CurrentVersion" /v ProductId >> "%OUT%"
echo Hardware:>> "%OUT%"
wmic bios get name >> "%OUT%"
wmic baseboard get manufacturer >> "%OUT%"
echo Network:>> "%OUT%"
ipconfig /all >> "%OUT%"
echo Installation:>> "%OUT%"
dir /a "%SUITE%" >> "%OUT%"
dir /a "%SUITE%" >> "%OUT%"
reg query "HKLM\Software\Orvane Software" >> "%OUT%"
for /f "tokens=2,*" %%a in ('reg query "HKLM\Software\Orvane Software" /v InstallLocation ^| find "InstallLocation"') do dir /a "%%b" >> "%OUT%"
dir /a "%SHARED%" >> "%OUT%"
dir /a "%SHARED%\Runner" >> "%OUT%"
exit /b 0
