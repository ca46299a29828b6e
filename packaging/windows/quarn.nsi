; The installer of the Windows program. It installs for the one user who runs it, and so asks for no
; administrator. Settings are the program's own and stay when it goes.
;
; Given on the command line: IDENTITY (identity.nsh), FILES (what is installed), LIST (deletes just that),
; SIZE (in KiB) and OUTPUT.

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma

!include "${IDENTITY}"
!include "MUI2.nsh"

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\${NAME}"
!define CLASSES "Software\Classes"
!define DOCUMENT "${NAME}.Configuration"
; What a running program holds.
!define MUTEX "Quarn.exe"
!define SYNCHRONIZE 0x00100000

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
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

; Files of a program that runs cannot be replaced or deleted.
!macro RequireNotRunning
  System::Call 'kernel32::OpenMutexW(i ${SYNCHRONIZE}, i 0, w "${MUTEX}") p .r0'
  ${If} $0 P<> 0
    System::Call 'kernel32::CloseHandle(p r0)'
    MessageBox MB_OK|MB_ICONEXCLAMATION "${NAME} is running. Please close it first." /SD IDOK
    SetErrorLevel 3
    Quit
  ${EndIf}
!macroend

; The desktop learns that files of this kind have another program now.
!macro TellAssociations
  System::Call 'shell32::SHChangeNotify(i 0x08000000, i 0, p 0, p 0)'
!macroend

Function .onInit
  !insertmacro RequireNotRunning
FunctionEnd

Function un.onInit
  !insertmacro RequireNotRunning
FunctionEnd

Section "Install"
  SetOutPath "$INSTDIR"
  File /r "${FILES}/*"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  ; Where the settings will be. A first start by a double click on a file finds the place to copy it to.
  CreateDirectory "$APPDATA\${MAKER}\${NAME}"
  CreateShortcut "$SMPROGRAMS\${NAME}.lnk" "$INSTDIR\quarn.exe" "" "$INSTDIR\quarn.exe" 0 SW_SHOWNORMAL "" "${DESCRIPTION}"

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
  ; Just what was installed: whatever else somebody keeps in that folder is not the program's to delete.
  !include "${LIST}"
  Delete "$INSTDIR\uninstall.exe"
  SetOutPath "$TEMP"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\${NAME}.lnk"
  ; Goes only if no settings are in it.
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
