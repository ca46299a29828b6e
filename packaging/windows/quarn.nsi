; The installer of the Windows program. It installs for the current user only, so it needs no administrator.
; Uninstalling keeps the settings.
;
; Values on the command line: IDENTITY (identity.nsh), FILES (the folder to install), LISTS (files.nsh, the list
; of its files), SIZE (in KiB) and OUTPUT.
;
; Exit codes of a silent run: 0 done; 2 the disk is full (this one comes from NSIS itself); 3 a program of Quarn is
; running, or a file is in use; 4 Quarn is installed in another folder; 5 a file may not be written or deleted. With
; 3 and 4 nothing is changed. (The uninstaller runs a copy of itself. To get its exit code, start it with _?=FOLDER as
; its last argument.)

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
; The pictures of the installer come from the checkout, whose times mean nothing.
SetDateSave off

!include "${IDENTITY}"
!include "${LISTS}"
!include "MUI2.nsh"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define CLASSES "Software\Classes"
!define DOCUMENT "${NAME}.Configuration"
; A running program holds this mutex.
!define MUTEX "Quarn.exe"
!define SYNCHRONIZE 0x00100000
!define GENERIC_READ_WRITE 0xC0000000
!define OPEN_EXISTING 3

Name "${NAME}"
BrandingText "${NAME} ${VERSION}"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\${NAME}"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
RequestExecutionLevel user
ManifestDPIAware true
ManifestSupportedOS Win10
ShowInstDetails nevershow
ShowUninstDetails nevershow

VIProductVersion "${FULL_VERSION}"
VIAddVersionKey "ProductName" "${NAME}"
VIAddVersionKey "CompanyName" "${MAKER}"
VIAddVersionKey "FileDescription" "${NAME} installer"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "MIT License, (c) 2026 ${MAKER}"

!define MUI_ICON "..\..\res\windows\quarn.ico"
!define MUI_UNICON "..\..\res\windows\quarn.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "..\..\res\windows\installer.bmp"
!define MUI_FINISHPAGE_RUN "$INSTDIR\quarn.exe"
!insertmacro MUI_PAGE_LICENSE "${FILES}\licences\Quarn.txt"
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE RefuseSecondOnPage
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

!macro EndWith STATUS TEXT
  MessageBox MB_OK|MB_ICONEXCLAMATION "${TEXT}" /SD IDOK
  SetErrorLevel ${STATUS}
  Quit
!macroend

; Opens an installed file exclusively: $1 is its handle, or -1 if it is in use. $2 counts the handles on the
; stack.
!macro HoldFile FILE
  ${If} $1 != -1
  ${AndIf} ${FileExists} "$INSTDIR\${FILE}"
    System::Call 'kernel32::CreateFileW(w "$INSTDIR\${FILE}", i ${GENERIC_READ_WRITE}, i 0, p 0, i ${OPEN_EXISTING}, i 0, p 0) p .r1'
    ${If} $1 != -1
      Push $1
      IntOp $2 $2 + 1
    ${EndIf}
  ${EndIf}
!macroend

; The files of a running program cannot be replaced or deleted, and a program whose file is held cannot be started.
!macro Hold FILES
  StrCpy $1 0
  StrCpy $2 0
  !insertmacro ${FILES} HoldFile
  ${If} $1 == -1
    !insertmacro LetGo
    !insertmacro EndWith 3 "${NAME} is running, or another program uses its files. Please close it first."
  ${EndIf}
!macroend

!macro LetGo
  ${While} $2 > 0
    Pop $1
    System::Call 'kernel32::CloseHandle(p r1)'
    IntOp $2 $2 - 1
  ${EndWhile}
!macroend

; A portable program counts too: it has the same settings.
!macro RequireNotRunning
  System::Call 'kernel32::OpenMutexW(i ${SYNCHRONIZE}, i 0, w "${MUTEX}") p .r0'
  ${If} $0 P<> 0
    System::Call 'kernel32::CloseHandle(p r0)'
    !insertmacro EndWith 3 "${NAME} is running. Please close it first."
  ${EndIf}
  !insertmacro Hold EachFile
  !insertmacro LetGo
!macroend

!macro DeleteFile FILE
  Delete "$INSTDIR\${FILE}"
!macroend

!macro RemoveFolder FOLDER
  RMDir "$INSTDIR\${FOLDER}"
!macroend

; Tells the desktop that this file type has another program now.
!macro TellAssociations
  System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
!macroend

; Two installations would share one entry in the list of programs, and only one could be uninstalled. $3 is the other
; one, or empty.
Function FindAnother
  ReadRegStr $3 HKCU "${UNINSTALL_KEY}" "InstallLocation"
  ${If} $3 == ""
    Return
  ${EndIf}
  GetFullPathName $3 "$3"
  GetFullPathName $4 "$INSTDIR"
  ; A folder that does not exist yet has no full name.
  ${If} $4 == ""
    StrCpy $4 "$INSTDIR"
  ${EndIf}
  ${If} $3 == $4
    StrCpy $3 ""
  ${EndIf}
  ${IfNot} ${FileExists} "$3\uninstall.exe"
    StrCpy $3 ""
  ${EndIf}
FunctionEnd

!define ANOTHER "${NAME} is installed in $3 already. Please install into that folder, or uninstall it first."

Function RefuseSecondOnPage
  Call FindAnother
  ${If} $3 != ""
    MessageBox MB_OK|MB_ICONEXCLAMATION "${ANOTHER}"
    Abort
  ${EndIf}
FunctionEnd

Function .onInit
  ${If} ${Silent}
    Call FindAnother
    ${If} $3 != ""
      !insertmacro EndWith 4 "${ANOTHER}"
    ${EndIf}
  ${EndIf}
  !insertmacro RequireNotRunning
FunctionEnd

Function un.onInit
  !insertmacro RequireNotRunning
FunctionEnd

Section "Install"
  ; The user has selected the folder, and time has passed.
  !insertmacro RequireNotRunning
  ; A mix of old and new files must not be started: the programs are held until all files are there.
  !insertmacro Hold EachProgram
  ClearErrors
  SetOutPath "$INSTDIR"
  SetDateSave on
  File /r /x *.exe /x *.com "${FILES}/*"
  !insertmacro LetGo
  File "${FILES}/*.exe"
  File "${FILES}/*.com"
  ${If} ${Errors}
    !insertmacro EndWith 5 "Not all files of ${NAME} could be written."
  ${EndIf}
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ; The folder for the settings. A first start by a double click on a file copies the file there.
  CreateDirectory "$APPDATA\${MAKER}\${NAME}"
  CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\quarn.exe" "" "$INSTDIR\quarn.exe" 0 SW_SHOWNORMAL "" "${DESCRIPTION}"
  CreateShortcut "$SMPROGRAMS\${NAME} Demo.lnk" "$INSTDIR\quarn.exe" "--demo" "$INSTDIR\quarn.exe" 0 SW_SHOWNORMAL "" "${NAME} with a simulated instrument"
  CreateShortcut "$SMPROGRAMS\${NAME} Guide.lnk" "$INSTDIR\guide\index.html"

  WriteRegStr HKCU "${CLASSES}\${DOCUMENT}" "" "${NAME} configuration"
  WriteRegStr HKCU "${CLASSES}\${DOCUMENT}\DefaultIcon" "" "$INSTDIR\quarn.exe,0"
  WriteRegStr HKCU "${CLASSES}\${DOCUMENT}\shell\open\command" "" '"$INSTDIR\quarn.exe" "%1"'
  WriteRegStr HKCU "${CLASSES}\.qrn" "" "${DOCUMENT}"
  WriteRegStr HKCU "${CLASSES}\.qrn\OpenWithProgids" "${DOCUMENT}" ""
  !insertmacro TellAssociations

  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "${NAME}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\quarn.exe,0"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "${MAKER}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "URLInfoAbout" "${WEB_PAGE}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE}
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Section "Uninstall"
  !insertmacro RequireNotRunning
  ; The programs first: as long as one of them exists, all files that it needs and the uninstaller exist too.
  ClearErrors
  !insertmacro EachProgram DeleteFile
  ${If} ${Errors}
    !insertmacro EndWith 5 "Not all files of ${NAME} could be deleted."
  ${EndIf}
  ; Only installed files: other files in that folder are not deleted.
  !insertmacro EachFile DeleteFile
  !insertmacro EachFolder RemoveFolder
  Delete "$INSTDIR\uninstall.exe"
  SetOutPath "$TEMP"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\${NAME}.lnk"
  Delete "$SMPROGRAMS\${NAME} Demo.lnk"
  Delete "$SMPROGRAMS\${NAME} Guide.lnk"
  ; Removed only if it has no settings.
  RMDir "$APPDATA\${MAKER}\${NAME}"
  RMDir "$APPDATA\${MAKER}"

  DeleteRegKey HKCU "${CLASSES}\${DOCUMENT}"
  DeleteRegValue HKCU "${CLASSES}\.qrn\OpenWithProgids" "${DOCUMENT}"
  DeleteRegKey /ifempty HKCU "${CLASSES}\.qrn\OpenWithProgids"
  ReadRegStr $0 HKCU "${CLASSES}\.qrn" ""
  ${If} $0 == "${DOCUMENT}"
    DeleteRegValue HKCU "${CLASSES}\.qrn" ""
  ${EndIf}
  DeleteRegKey /ifempty HKCU "${CLASSES}\.qrn"
  !insertmacro TellAssociations
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd
