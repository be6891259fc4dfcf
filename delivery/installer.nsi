; The Windows installer. Both word sizes of the component are installed and registered where the
; system has both; a 32-bit system gets the 32-bit one alone.
;   makensis -DVERSION=... -DSTAGE=folder with win64, win32 and docs -DFILES=list of its files
;            -DOUTPUT=... installer.nsi          (scripts/make-installer writes the list)
; /S installs or uninstalls without a question, /D=folder (last) names the folder. The exit code is
; not 0 when that failed; then an earlier version is as it was, and without one nothing is left behind.
Unicode true
!include LogicLib.nsh
!include x64.nsh
!include "${FILES}"
!include "data_folder.nsh"

!define PRODUCT "TLV RDV Line Configuration"
!define COMPONENT "TLV_RDV_Line_Config.dll"
!define PREVIOUS "replaced"  ; holds an earlier version's files for the time of an installation
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
; The times of the files would be those of the build.
SetDateSave off

VIProductVersion "${VERSION}.0"
VIAddVersionKey "ProductName" "${PRODUCT}"
VIAddVersionKey "ProductVersion" "${VERSION}"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "FileDescription" "Installs ${PRODUCT}"
VIAddVersionKey "LegalCopyright" ""

; The component runs in the processes of administrators: where users may write, they could replace it.
DirText "The folder must lie in Program Files, where users cannot replace what administrators run."
Page directory
Page instfiles
UninstPage uninstConfirm
UninstPage instfiles

; $failed, of data_folder.nsh: why, or nothing.
Var written  ; whether files of this version may lie in the folder
Var allowed  ; whether users cannot write where the component is to lie
Var earlier  ; where a version is installed already, or nothing

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

; What is done with one file of the delivery, of which files.nsh has the list: FOLDER below the
; installation folder, NAME there, SOURCE below ${STAGE}. The folder is the user's choice and may hold
; files of his: nothing is deleted but what is named.

; An earlier version's file is kept until the new one is registered, also when a program uses it now.
!macro SetAside FOLDER NAME SOURCE
  ${If} ${FileExists} "$INSTDIR\${FOLDER}\${NAME}"
    CreateDirectory "$INSTDIR\${PREVIOUS}\${FOLDER}"
    Delete "$INSTDIR\${PREVIOUS}\${FOLDER}\${NAME}"
    ClearErrors
    Rename "$INSTDIR\${FOLDER}\${NAME}" "$INSTDIR\${PREVIOUS}\${FOLDER}\${NAME}"
    ${If} ${Errors}
      StrCpy $failed "${FOLDER}\${NAME} cannot be replaced."
    ${EndIf}
  ${EndIf}
!macroend

!macro Install FOLDER NAME SOURCE
  SetOutPath "$INSTDIR\${FOLDER}"
  ClearErrors
  File "${STAGE}/${SOURCE}"
  ${If} ${Errors}
    StrCpy $failed "${FOLDER}\${NAME} cannot be written."
  ${EndIf}
!macroend

!macro Restore FOLDER NAME SOURCE
  ${If} $written != ""
    Delete "$INSTDIR\${FOLDER}\${NAME}"
  ${EndIf}
  ${If} ${FileExists} "$INSTDIR\${PREVIOUS}\${FOLDER}\${NAME}"
    Rename "$INSTDIR\${PREVIOUS}\${FOLDER}\${NAME}" "$INSTDIR\${FOLDER}\${NAME}"
  ${EndIf}
!macroend

!macro Forget FOLDER NAME SOURCE
  Delete /REBOOTOK "$INSTDIR\${PREVIOUS}\${FOLDER}\${NAME}"
!macroend

!macro Remove FOLDER NAME SOURCE
  Delete /REBOOTOK "$INSTDIR\${FOLDER}\${NAME}"
!macroend

!macro RemoveFromEarlier FOLDER NAME SOURCE
  Delete /REBOOTOK "$earlier\${FOLDER}\${NAME}"
!macroend

; The same for the folders; one that is not empty stays.
!macro ForgetFolder FOLDER
  RMDir "$INSTDIR\${PREVIOUS}\${FOLDER}"
!macroend

!macro RemoveFolder FOLDER
  RMDir "$INSTDIR\${FOLDER}"
!macroend

!macro RemoveFolderFromEarlier FOLDER
  RMDir "$earlier\${FOLDER}"
!macroend

; DO what is given with all files that this system gets.
!macro ForAllFiles DO
  !insertmacro ForFilesOfWin32 ${DO}
  !insertmacro ForFilesOfDocs ${DO}
  ${If} ${RunningX64}
    !insertmacro ForFilesOfWin64 ${DO}
  ${EndIf}
!macroend

!macro ForAllFolders DO
  !insertmacro ForFoldersOfWin32 ${DO}
  !insertmacro ForFoldersOfDocs ${DO}
  !insertmacro ForFoldersOfWin64 ${DO}
!macroend

; Sets $failed when one of the registrations fails. A system without 64-bit programs has one only.
!macro RegisterAll
  !insertmacro RegisterForTheMachine
  !insertmacro Regsvr32 32 ""
  ${If} $0 != 0
    StrCpy $failed "The 32-bit component could not be registered."
  ${EndIf}
  ${If} ${RunningX64}
    !insertmacro Regsvr32 64 ""
    ${If} $0 != 0
      StrCpy $failed "The 64-bit component could not be registered."
    ${EndIf}
  ${EndIf}
!macroend

!macro UnregisterAll
  !insertmacro RegisterForTheMachine
  !insertmacro Regsvr32 32 "/u"
  ${If} ${RunningX64}
    !insertmacro Regsvr32 64 "/u"
  ${EndIf}
!macroend

; After a failure: the earlier installation works as before, or nothing is left.
!macro TakeBack
  ${If} $earlier == ""
    !insertmacro UnregisterAll
  ${EndIf}
  !insertmacro ForAllFiles Restore
  !insertmacro ForAllFolders ForgetFolder
  RMDir "$INSTDIR\${PREVIOUS}"
  !insertmacro ForAllFolders RemoveFolder
  RMDir "$INSTDIR"
  ${If} $earlier != ""
    Push $INSTDIR
    StrCpy $INSTDIR $earlier
    !insertmacro RegisterAll
    Pop $INSTDIR
  ${EndIf}
!macroend

; Sets $allowed to "yes" where the folder lies below Program Files of either word size.
!macro AllowBelow FOLDER
  StrLen $2 "${FOLDER}\"
  StrCpy $3 $1 $2
  ${If} $3 == "${FOLDER}\"
    StrCpy $allowed "yes"
  ${EndIf}
!macroend

Function CheckFolder
  StrCpy $allowed ""
  ; With every ".." carried out.
  System::Call 'kernel32::GetFullPathName(t "$INSTDIR", i ${NSIS_MAX_STRLEN}, t .r1, p 0) i .r0'
  !insertmacro AllowBelow "$PROGRAMFILES"
  ${If} ${RunningX64}
    !insertmacro AllowBelow "$PROGRAMFILES64"
  ${EndIf}
FunctionEnd

; The page's button stays out of reach.
Function .onVerifyInstDir
  Call CheckFolder
  ${If} $allowed == ""
    Abort
  ${EndIf}
FunctionEnd

Function .onInit
  ${If} ${RunningX64}
  ${AndIf} $INSTDIR == "$PROGRAMFILES\TLV RDV Line Configuration"
    StrCpy $INSTDIR "$PROGRAMFILES64\TLV RDV Line Configuration"
  ${EndIf}
FunctionEnd

Section
  StrCpy $failed ""
  StrCpy $written ""
  Call CheckFolder
  ${If} $allowed == ""
    SetErrorLevel 2
    Abort "$INSTDIR does not lie in Program Files: users could replace what is registered for the machine."
  ${EndIf}
  ReadRegStr $earlier HKLM "${UNINSTALL_KEY}" "InstallLocation"
  !insertmacro ForAllFiles SetAside
  ${If} $failed == ""
    StrCpy $written "yes"
    !insertmacro ForAllFiles Install
    SetOutPath "$INSTDIR"
  ${EndIf}
  ${If} $failed == ""
    !insertmacro RegisterAll
  ${EndIf}
  ${If} $failed == ""
    !insertmacro MakeDataFolder
  ${EndIf}
  ${If} $failed != ""
    DetailPrint "$failed"
    SetOutPath "$TEMP"
    !insertmacro TakeBack
    SetErrorLevel 2
    Abort "Nothing was installed."
  ${EndIf}

  !insertmacro ForAllFiles Forget
  !insertmacro ForAllFolders ForgetFolder
  RMDir "$INSTDIR\${PREVIOUS}"
  ${If} $earlier != ""
  ${AndIf} $earlier != $INSTDIR
    !insertmacro ForAllFiles RemoveFromEarlier
    Delete "$earlier\uninstall.exe"
    !insertmacro ForAllFolders RemoveFolderFromEarlier
    RMDir "$earlier"
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
  !insertmacro UnregisterAll
  DeleteRegKey HKLM "${UNINSTALL_KEY}"
  !insertmacro RemoveDataFolder
  SetShellVarContext all
  Delete "$SMPROGRAMS\${PRODUCT}.lnk"
  !insertmacro ForAllFiles Remove
  Delete /REBOOTOK "$INSTDIR\uninstall.exe"
  !insertmacro ForAllFolders RemoveFolder
  RMDir "$INSTDIR"
SectionEnd
