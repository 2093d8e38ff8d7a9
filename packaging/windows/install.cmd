@echo off
rem Installs Marbex OPOS on this computer and makes a first device. Run it from a command prompt that was opened
rem as administrator.
rem
rem   install.cmd [DEVICE [MODEL [ADDRESS]]]
rem
rem DEVICE is the name that the till opens (when missing, Till1 if there are no devices yet), MODEL one of marbex-opos
rem models (TALIS when missing), ADDRESS the printer's IP address (without one the model's first port with its defaults).
rem
rem Exit codes: 0 installed, 1 not or not completely installed, 2 installed but without the device, 5 not administrator.
setlocal EnableExtensions DisableDelayedExpansion
set "bits=@BITS@"
set "here=%~dp0"

rem Where programs of this kind belong, also when a 32-bit program has called this.
set "programs=%ProgramFiles%"
if "%bits%"=="32" goto bits32
if not "%ProgramW6432%"=="" set "programs=%ProgramW6432%"
if not "%ProgramFiles(x86)%"=="" goto located
echo This is the package for 64-bit Windows, and this Windows has 32 bits.
exit /b 1
:bits32
if not "%ProgramFiles(x86)%"=="" set "programs=%ProgramFiles(x86)%"
:located
set "target=%programs%\Marbex OPOS"

rem What is needed is tried, not guessed.
if not exist "%target%\" mkdir "%target%" 2>nul
echo probe>"%target%\probe.tmp" 2>nul
if not exist "%target%\probe.tmp" goto norights
del "%target%\probe.tmp"

if not exist "%here%MarbexOpos.dll" goto incomplete
if not exist "%here%marbex-opos.exe" goto incomplete
copy /y "%here%marbex-opos.exe" "%target%\marbex-opos.exe" >nul
if not "%errorlevel%"=="0" goto inuse
copy /y "%here%MarbexOpos.dll" "%target%\MarbexOpos.dll" >nul
if not "%errorlevel%"=="0" goto inuse
copy /y "%here%uninstall.cmd" "%target%\uninstall.cmd" >nul
copy /y "%here%README.txt" "%target%\README.txt" >nul
copy /y "%here%THIRD-PARTY.txt" "%target%\THIRD-PARTY.txt" >nul
echo Installed in %target%

rem As regsvr32 does, but a registration that could not be written is an error here. A program that crashes ends with a
rem negative number, which "if errorlevel 1" would take for success.
echo Registered:
"%target%\marbex-opos.exe" register
if not "%errorlevel%"=="0" goto unregistered

set "device=%~1"
if not "%device%"=="" goto named
"%target%\marbex-opos.exe" devices list >"%target%\probe.tmp"
if not "%errorlevel%"=="0" goto nolist
for %%F in ("%target%\probe.tmp") do if not "%%~zF"=="0" goto havedevices
del "%target%\probe.tmp"
set "device=Till1"
:named
"%target%\marbex-opos.exe" devices show "%device%" >nul 2>nul
if "%errorlevel%"=="0" goto known
set "model=%~2"
if "%model%"=="" set "model=TALIS"
if "%~3"=="" goto firstport
"%target%\marbex-opos.exe" devices add "%device%" "PrinterModel=%model%" "PortType=ethernet" "IPAddress=%~3"
if not "%errorlevel%"=="0" goto refused
goto made
:firstport
"%target%\marbex-opos.exe" devices add "%device%" "PrinterModel=%model%"
if not "%errorlevel%"=="0" goto refused
:made
echo Try it:
echo   "%target%\marbex-opos.exe" health "%device%"
exit /b 0

:known
echo There is a device "%device%" already; it stays as it is.
exit /b 0

:havedevices
del "%target%\probe.tmp"
echo The devices of this computer stay as they are. To add one:
echo   "%target%\marbex-opos.exe" devices add Till2 "PrinterModel=TALIS ETHERNET" IPAddress=192.168.0.20
exit /b 0

:norights
echo %target% cannot be written.
echo Open a command prompt with "Run as administrator" and start this again.
exit /b 5

:incomplete
echo MarbexOpos.dll and marbex-opos.exe must be in the same folder as this script.
exit /b 1

:inuse
echo The files in %target% cannot all be replaced. Is a program using them?
exit /b 1

:unregistered
echo The files are in place, but the service objects are not registered.
exit /b 1

:nolist
del "%target%\probe.tmp"
echo Installed and registered, but the devices of this computer cannot be read.
exit /b 2

:refused
echo Installed and registered, but the device "%device%" was not made.
exit /b 2
