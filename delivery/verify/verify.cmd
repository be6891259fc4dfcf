@echo off
rem Proves TLV RDV Line Configuration on this machine and writes report.html beside this file.
rem What is given goes to the program: verify --bits 64 --only "Folders.*", verify --help.
setlocal
set "KIT=%~dp0"
set "PROGRAM=%KIT%win32\rdvverify.exe"
if exist "%SystemRoot%\SysWOW64" set "PROGRAM=%KIT%win64\rdvverify.exe"
"%PROGRAM%" run %*
set "RESULT=%ERRORLEVEL%"
if not "%~1"=="" exit /b %RESULT%
rem Started by a double click: whoever did it wants to see what came out.
if exist "%KIT%report.html" start "" "%KIT%report.html"
pause
exit /b %RESULT%
