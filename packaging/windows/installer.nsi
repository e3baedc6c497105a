; The installer: for the user who runs it, silent with /S. It closes a running client in order and
; starts the new one in its place.
;
; VERSION, FILES (the folder to install), LIST (deletes those files), ICON and OUTPUT come from the
; command line of makensis.

Unicode true
ManifestDPIAware true
RequestExecutionLevel user
SetCompressor /SOLID lzma
AllowSkipFiles off

!include FileFunc.nsh
!include LogicLib.nsh
!include MUI2.nsh
!include WinMessages.nsh

!define REGISTRY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Orvelle"
; The hidden window that a client has as long as it has anything open.
!define CLIENT_WINDOW "OrvelleSessionEnd"
!define CLOSE_TRIES 150 ; of 200 ms

Name "Orvelle"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Orvelle"
InstallDirRegKey HKCU "${REGISTRY}" InstallLocation
BrandingText "Orvelle ${VERSION}"
VIProductVersion "${VERSION}.0"
VIAddVersionKey ProductName "Orvelle"
VIAddVersionKey ProductVersion "${VERSION}"
VIAddVersionKey FileDescription "Orvelle setup"
VIAddVersionKey FileVersion "${VERSION}"
VIAddVersionKey LegalCopyright "GNU General Public License, version 3 or later"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN "$INSTDIR\orvelle.exe"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE English
!insertmacro MUI_LANGUAGE SimpChinese

LangString STILL_RUNNING ${LANG_ENGLISH} "Orvelle is still running. Close it and try again."
LangString STILL_RUNNING ${LANG_SIMPCHINESE} "Orvelle 仍在运行。请关闭后重试。"
LangString REMOVE_SETTINGS ${LANG_ENGLISH} "Remove the settings and the known cameras, too?$\n$\nSnapshots and recordings stay in any case."
LangString REMOVE_SETTINGS ${LANG_SIMPCHINESE} "是否同时删除设置和已添加的摄像机？$\n$\n截图和录像始终保留。"

Var WasRunning

; Asks a running client to quit and waits until no program uses the libraries any more; gives up
; where that does not come to pass.
!macro CLOSE_CLIENT un
Function ${un}closeClient
    StrCpy $WasRunning 0
    ${For} $1 1 ${CLOSE_TRIES}
        FindWindow $0 "${CLIENT_WINDOW}"
        ${If} $0 <> 0
            StrCpy $WasRunning 1
            ; Again and again, since a client that starts takes no orders yet.
            SendMessage $0 ${WM_APP} 0 0 /TIMEOUT=1000
        ${ElseIfNot} ${FileExists} "$INSTDIR\Qt5Core.dll"
            Return
        ${Else}
            ClearErrors
            FileOpen $0 "$INSTDIR\Qt5Core.dll" a
            ${IfNot} ${Errors}
                FileClose $0
                Return
            ${EndIf}
        ${EndIf}
        Sleep 200
    ${Next}
    MessageBox MB_OK|MB_ICONEXCLAMATION "$(STILL_RUNNING)" /SD IDOK
    SetErrorLevel 2
    Abort
FunctionEnd
!macroend
!insertmacro CLOSE_CLIENT ""
!insertmacro CLOSE_CLIENT "un."

Section
    Call closeClient
    SetOutPath "$INSTDIR"
    File /r "${FILES}/*"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    CreateShortcut "$SMPROGRAMS\Orvelle.lnk" "$INSTDIR\orvelle.exe"
    WriteRegStr HKCU "${REGISTRY}" DisplayName "Orvelle"
    WriteRegStr HKCU "${REGISTRY}" DisplayVersion "${VERSION}"
    WriteRegStr HKCU "${REGISTRY}" DisplayIcon "$INSTDIR\orvelle.exe"
    WriteRegStr HKCU "${REGISTRY}" Publisher "Orvelle"
    WriteRegStr HKCU "${REGISTRY}" InstallLocation "$INSTDIR"
    WriteRegStr HKCU "${REGISTRY}" UninstallString '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${REGISTRY}" QuietUninstallString '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${REGISTRY}" NoModify 1
    WriteRegDWORD HKCU "${REGISTRY}" NoRepair 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${REGISTRY}" EstimatedSize $0
SectionEnd

Function .onInstSuccess
    ; With pages the last one offers it.
    ${If} ${Silent}
    ${AndIf} $WasRunning = 1
        Exec '"$INSTDIR\orvelle.exe"'
    ${EndIf}
FunctionEnd

; What a client keeps lies among the user's pictures where no other folder was chosen for those, so
; only its own names go.
Section Uninstall
    Call un.closeClient
    !include "${LIST}"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\Orvelle.lnk"
    DeleteRegKey HKCU "${REGISTRY}"
    MessageBox MB_YESNO|MB_ICONQUESTION|MB_DEFBUTTON2 "$(REMOVE_SETTINGS)" /SD IDNO IDNO keep
    RMDir /r "$LOCALAPPDATA\Orvelle\configure"
    RMDir /r "$LOCALAPPDATA\Orvelle\Devices"
    RMDir /r "$LOCALAPPDATA\Orvelle\cache"
    keep:
    RMDir /r "$LOCALAPPDATA\Orvelle\Update"
    Delete "$LOCALAPPDATA\Orvelle\Orvelle.log"
    Delete "$LOCALAPPDATA\Orvelle\Orvelle.dmp"
    RMDir "$LOCALAPPDATA\Orvelle"
SectionEnd
