; Where the site's database lies, for the installer. Users may change the files in the database's folder
; and make new ones, as saving does; the folders themselves, and the settings, only administrators may
; change, rename and replace.
;
; Anybody may make a folder in the common one, and has all rights over it then: what an ordinary user has
; made in the place of one of these before is taken over and gets the rights of a new one. What
; administrators have made keeps the rights that they gave it, but for what lies in a folder that was taken
; over: there anybody could have put anything.
Var failed      ; why, or nothing
Var data_made   ; "yes" where there was none of it before
Var taken_over  ; "yes" from the first folder on that an ordinary user had made

; The groups, whatever they are called in the system's language.
!define USERS "*S-1-5-32-545"
!define ADMINISTRATORS "*S-1-5-32-544"
!define SYSTEM "*S-1-5-18"
; Of the system's library.
!define SE_FILE_OBJECT 1
!define OWNER_SECURITY_INFORMATION 1
!define FILE_ATTRIBUTE_REPARSE_POINT 0x400
!define INVALID_FILE_ATTRIBUTES -1
!define WinLocalSystemSid 22
!define WinBuiltinAdministratorsSid 26

; /L: of a link itself, should somebody put one there at this moment, not of what it leads to.
!macro Rights PATH ARGUMENTS
  ${If} $failed == ""
    nsExec::ExecToLog '"$SYSDIR\icacls.exe" "${PATH}" ${ARGUMENTS} /L'
    Pop $0
    ${If} $0 != 0
      StrCpy $failed "The rights of ${PATH} could not be set."
    ${EndIf}
  ${EndIf}
!macroend

; Sets $0 to 1 where the owner is the system or the group of administrators, as for all that these make.
!macro IsAdministrators PATH
  System::Call 'advapi32::GetNamedSecurityInfo(t "${PATH}", i ${SE_FILE_OBJECT}, i ${OWNER_SECURITY_INFORMATION}, *p .r1, p 0, p 0, p 0, *p .r2) i .r3'
  StrCpy $0 0
  ${If} $3 == 0
    System::Call 'advapi32::IsWellKnownSid(p r1, i ${WinBuiltinAdministratorsSid}) i .r0'
    ${If} $0 == 0
      System::Call 'advapi32::IsWellKnownSid(p r1, i ${WinLocalSystemSid}) i .r0'
    ${EndIf}
    System::Call 'kernel32::LocalFree(p r2)'
  ${EndIf}
!macroend

!macro RefuseLink PATH
  System::Call 'kernel32::GetFileAttributes(t "${PATH}") i .r0'
  IntOp $1 $0 & ${FILE_ATTRIBUTE_REPARSE_POINT}
  ${If} $1 != 0
  ${AndIf} $failed == ""
    StrCpy $failed "${PATH} is a link that an ordinary user has made."
  ${EndIf}
!macroend

; Sets $4 to "new" where nothing has the name, not even a link that leads nowhere; to "theirs" where it is
; the administrators'; else to "taken over". A link of somebody else's is a failure.
!macro LookWhoseItIs PATH
  StrCpy $4 "new"
  System::Call 'kernel32::GetFileAttributes(t "${PATH}") i .r5'
  ${If} $5 != ${INVALID_FILE_ATTRIBUTES}
    StrCpy $4 "taken over"
    !insertmacro IsAdministrators "${PATH}"
    ${If} $0 == 1
    ${AndIf} $taken_over == ""
      StrCpy $4 "theirs"
    ${EndIf}
    ${If} $4 == "taken over"
      !insertmacro RefuseLink "${PATH}"
    ${EndIf}
  ${EndIf}
!macroend

; Of a file in a folder that was taken over: who owned it could take the rights away again.
!macro TakeOverFile PATH
  ${If} $taken_over != ""
  ${AndIf} $failed == ""
    !insertmacro LookWhoseItIs "${PATH}"
    ${If} $4 == "taken over"
      !insertmacro Rights "${PATH}" "/setowner ${ADMINISTRATORS}"
      !insertmacro Rights "${PATH}" "/reset"
    ${EndIf}
  ${EndIf}
!macroend

; The folder is there afterwards, and only administrators can replace it. Those above come first: then
; nobody can put something else into its place meanwhile. GRANTS: beyond what it inherits, or nothing.
!macro SecureFolder PATH GRANTS
  ${If} $failed == ""
    !insertmacro LookWhoseItIs "${PATH}"
    ${If} $4 == "taken over"
      StrCpy $taken_over "yes"
    ${EndIf}
    ClearErrors
    CreateDirectory "${PATH}"
    ${If} ${Errors}
      StrCpy $failed "${PATH} cannot be made."
    ${EndIf}
    ${If} $4 != "theirs"
      ; Once more: it may have come between the look and the making.
      !insertmacro RefuseLink "${PATH}"
      !insertmacro Rights "${PATH}" "/setowner ${ADMINISTRATORS}"
      !insertmacro Rights "${PATH}" "/reset"
      !if "${GRANTS}" != ""
        !insertmacro Rights "${PATH}" "${GRANTS}"
      !endif
    ${EndIf}
  ${EndIf}
!macroend

; Sets $failed where it cannot be done; what was made is gone again then.
!macro MakeDataFolder
  SetShellVarContext all
  StrCpy $taken_over ""
  StrCpy $data_made "yes"
  ${If} ${FileExists} "$APPDATA\Tolvane\*.*"
    StrCpy $data_made ""
  ${EndIf}
  ; Nothing is inherited from the common folder: there, whoever makes something has all rights over it.
  !insertmacro SecureFolder "$APPDATA\Tolvane" "/inheritance:r /grant:r ${SYSTEM}:(OI)(CI)F ${ADMINISTRATORS}:(OI)(CI)F ${USERS}:(OI)(CI)RX"
  !insertmacro SecureFolder "$APPDATA\Tolvane\ORVANT+" ""
  ; Its files may be changed and removed (IO: this is for them alone), the folder only added to.
  !insertmacro SecureFolder "$APPDATA\Tolvane\ORVANT+\Database" "/grant ${USERS}:(OI)(IO)M /grant ${USERS}:(RX,WD)"
  !insertmacro TakeOverFile "$APPDATA\Tolvane\ORVANT+\ORVANTPlus.ini"
  !insertmacro TakeOverFile "$APPDATA\Tolvane\ORVANT+\Database\NewDB.mdb"
  ${If} $failed != ""
  ${AndIf} $data_made == "yes"
    !insertmacro RemoveDataFolder
  ${EndIf}
!macroend

; A folder that holds data stays.
!macro RemoveDataFolder
  SetShellVarContext all
  RMDir "$APPDATA\Tolvane\ORVANT+\Database"
  RMDir "$APPDATA\Tolvane\ORVANT+"
  RMDir "$APPDATA\Tolvane"
!macroend
