; Nothing but what the installer does with the data folder. Ends with 2 where that fails.
;   makensis -DOUTPUT=... -DDELIVERY=folder data_folder.nsi
Target amd64-unicode
!include LogicLib.nsh
!addincludedir "${DELIVERY}"
!include "data_folder.nsh"
Name "Data folder"
OutFile "${OUTPUT}"
RequestExecutionLevel user
SilentInstall silent
Section
  StrCpy $failed ""
  !insertmacro MakeDataFolder
  ${If} $failed != ""
    SetErrorLevel 2
    Abort "$failed"
  ${EndIf}
SectionEnd
