@echo off
rem Removes Marbex OPOS from this computer: the registration and the program files. The devices stay in the registry,
rem for the next installation. Run it from a command prompt that was opened as administrator.
rem
rem Exit codes: 0 removed, 1 not all removed, 5 not administrator.
setlocal EnableExtensions DisableDelayedExpansion
set "bits=@BITS@"
set "programs=%ProgramFiles%"
set "others="
set "services=HKEY_LOCAL_MACHINE\SOFTWARE\OLEforRetail\ServiceOPOS"
if not "%ProgramW6432%"=="" set "programs=%ProgramW6432%"
if "%ProgramFiles(x86)%"=="" goto located
set "others=%ProgramFiles(x86)%"
if "%bits%"=="64" goto located
set "others=%programs%"
set "programs=%ProgramFiles(x86)%"
set "services=HKEY_LOCAL_MACHINE\SOFTWARE\WOW6432Node\OLEforRetail\ServiceOPOS"
:located
set "target=%programs%\Marbex OPOS"
set "other=%others%\Marbex OPOS\marbex-opos.exe"
if not exist "%target%\marbex-opos.exe" goto absent

echo probe>"%target%\probe.tmp" 2>nul
if not exist "%target%\probe.tmp" goto norights
del "%target%\probe.tmp"

"%target%\marbex-opos.exe" unregister
if not "%errorlevel%"=="0" goto registered
rem The ProgIDs belong to both halves of the registry and have gone for both.
if not "%others%"=="" if exist "%other%" "%other%" register >nul
del "%target%\MarbexOpos.dll" 2>nul
if exist "%target%\MarbexOpos.dll" goto inuse
del "%target%\marbex-opos.exe" 2>nul
if exist "%target%\marbex-opos.exe" goto inuse
del "%target%\README.txt" "%target%\THIRD-PARTY.txt" 2>nul
echo Removed from %target%
echo The devices are still in the registry, below %services%.
rem In one line: this script may be the one that goes, and nothing is read from it afterwards.
del "%target%\uninstall.cmd" & rmdir "%target%" 2>nul & exit /b 0

:absent
echo Marbex OPOS is not installed in %target%
exit /b 1

:norights
echo %target% cannot be written.
echo Open a command prompt with "Run as administrator" and start this again.
exit /b 5

:registered
echo The registration could not be removed; nothing was deleted.
exit /b 1

:inuse
echo The registration is removed, but files in %target% are in use.
echo End the programs that print and start this again.
exit /b 1
