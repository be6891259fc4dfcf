; The Windows installer. Both word sizes of the component are installed and registered where the
; system has both; a 32-bit system gets the 32-bit one alone.
;   makensis -DVERSION=... -DPROGRAMS=folder with win64 and win32 -DDOCS=... -DOUTPUT=... installer.nsi
; /S installs or uninstalls without a question; the exit code is not 0 when that failed, and then
; nothing is left behind.
Unicode true
!include LogicLib.nsh
!include x64.nsh

!define PRODUCT "TLV RDV Line Configuration"
!define COMPONENT "TLV_RDV_Line_Config.dll"
!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\TLV_RDV_Line_Config"

Name "${PRODUCT} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$PROGRAMFILES\TLV RDV Line Configuration"
InstallDirRegKey HKLM "${UNINSTALL_KEY}" "InstallLocation"
RequestExecutionLevel admin
ManifestDPIAware true
SetCompressor /SOLID lzma
CRCCheck force
ShowInstDetails show

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Installs ${PRODUCT}"
VIAddVersionKey "LegalCopyright" ""

Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

Var failed

; The component is for all users; without this it would register for the installing user alone
; wherever the rights for more are missing, and that must fail here.
!macro RegisterForTheMachine
  System::Call 'kernel32::SetEnvironmentVariable(t "RDV_REGISTRATION", t "machine")'
!macroend

; A 32-bit installer sees the 64-bit system folder only with the redirection switched off.
!macro Regsvr32 BITS ARGUMENTS
  !if ${BITS} == 64
    ${DisableX64FSRedirection}
    ExecWait '"$WINDIR\System32\regsvr32.exe" /s ${ARGUMENTS} "$INSTDIR\win64\${COMPONENT}"' $0
    ${EnableX64FSRedirection}
  !else
    ExecWait '"$SYSDIR\regsvr32.exe" /s ${ARGUMENTS} "$INSTDIR\win32\${COMPONENT}"' $0
  !endif
!macroend

; Everything that the section installs; in reverse order of the installation.
!macro RemoveAll
  !insertmacro RegisterForTheMachine
  !insertmacro Regsvr32 32 "/u"
  ${If} ${RunningX64}
    !insertmacro Regsvr32 64 "/u"
  ${EndIf}
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  SetShellVarContext all
  Delete "$SMPROGRAMS\${PRODUCT}.lnk"
  RMDir /r /REBOOTOK "$INSTDIR\win64"
  RMDir /r /REBOOTOK "$INSTDIR\win32"
  RMDir /r /REBOOTOK "$INSTDIR\docs"
  Delete /REBOOTOK "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
!macroend

Function .onInit
  ${If} ${RunningX64}
  ${AndIf} $INSTDIR == "$PROGRAMFILES\TLV RDV Line Configuration"
    StrCpy $INSTDIR "$PROGRAMFILES64\TLV RDV Line Configuration"
  ${EndIf}
FunctionEnd

Section
  StrCpy $failed ""
  SetOutPath "$INSTDIR\win32"
  File /r "${PROGRAMS}/win32/*"
  SetOutPath "$INSTDIR\docs"
  File /r "${DOCS}/*"
  ${If} ${RunningX64}
    SetOutPath "$INSTDIR\win64"
    File /r "${PROGRAMS}/win64/*"
  ${EndIf}
  SetOutPath "$INSTDIR"

  !insertmacro RegisterForTheMachine
  !insertmacro Regsvr32 32 ""
  ${If} $0 != 0
    StrCpy $failed "32-bit"
  ${EndIf}
  ${If} ${RunningX64}
    !insertmacro Regsvr32 64 ""
    ${If} $0 != 0
      StrCpy $failed "64-bit"
    ${EndIf}
  ${EndIf}
  ${If} $failed != ""
    DetailPrint "The $failed component could not be registered."
    !insertmacro RemoveAll
    SetErrorLevel 2
    Abort "Nothing was installed."
  ${EndIf}

  SetShellVarContext all
  ${If} ${RunningX64}
    CreateShortcut "$SMPROGRAMS\${PRODUCT}.lnk" "$INSTDIR\win64\rdvhost.exe"
  ${Else}
    CreateShortcut "$SMPROGRAMS\${PRODUCT}.lnk" "$INSTDIR\win32\rdvhost.exe"
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayName" "${PRODUCT}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKLM "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKLM "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKLM "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "Uninstall"
  !insertmacro RemoveAll
SectionEnd
