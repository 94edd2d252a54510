; The installer and uninstaller: for one user, without administrator rights. scripts/installer gives VERSION, PRODUCT_PAGE, PROGRAM (the
; built exe), CONSOLE (the built console companion), SIZE_KB, ROOT (the source tree), GUIDE (the guide's address), OUTPUT and, where the release is signed, SIGN
; (a command that signs the file named after it).
;
; Silent with /S; /AUTOSTART then has it start with Windows, and without it that stays as it was. The uninstaller keeps rules, alert log and settings unless /PURGE or its check box says otherwise. Exit codes: 0 done,
; 1 cancelled, 2 failed: a file could not be replaced, 3 the running program did not end, 4 the logon task that starts the program as
; administrator could not be removed. After 2, 3 and 4 what was installed before is still there.

Unicode true
Target amd64-unicode
SetCompressor /SOLID lzma
ManifestDPIAware true
RequestExecutionLevel user

!include MUI2.nsh
!include LogicLib.nsh
!include FileFunc.nsh

!define UNINSTALL_KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\Vantora"
!define SETTINGS_KEY "Software\Vantora"
!define RUN_KEY "Software\Microsoft\Windows\CurrentVersion\Run"
!define RUNNING_EVENT "Global\VantoraRunning"
!define SYNCHRONIZE 0x100000
!define ERROR_ACCESS_DENIED 5
!define END_WAIT_MS 100
!define END_WAITS 200 ; 20 s: the program may take 10 s to stop its monitor
!define EXIT_CANCELLED 1
!define EXIT_FAILED 2
!define EXIT_STILL_RUNNING 3
!define EXIT_TASK_STAYS 4

Name "Vantora"
OutFile "${OUTPUT}"
InstallDir "$LOCALAPPDATA\Programs\Vantora"
InstallDirRegKey HKCU "${UNINSTALL_KEY}" "InstallLocation"
BrandingText "Vantora ${VERSION}"
VIProductVersion "${VERSION}"
VIFileVersion "${VERSION}"
VIAddVersionKey "CompanyName" "Vantora"
VIAddVersionKey "FileDescription" "Vantora installer"
VIAddVersionKey "FileVersion" "${VERSION}"
VIAddVersionKey "LegalCopyright" "Copyright (c) 2026 The Vantora team"
VIAddVersionKey "ProductName" "Vantora"
VIAddVersionKey "ProductVersion" "${VERSION}"

!define MUI_ICON "${ROOT}/res/vantora.ico"
!define MUI_UNICON "${ROOT}/res/vantora.ico"
!define MUI_WELCOMEFINISHPAGE_BITMAP "${ROOT}/packaging/finish.bmp"
!define MUI_ABORTWARNING
!insertmacro MUI_PAGE_LICENSE "${ROOT}/LICENSE"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!define MUI_FINISHPAGE_RUN "$INSTDIR\vantora.exe"
; The page's second box, which has the name of another use.
!define MUI_FINISHPAGE_SHOWREADME ""
!define MUI_FINISHPAGE_SHOWREADME_TEXT "Start with &Windows"
!define MUI_FINISHPAGE_SHOWREADME_NOTCHECKED
!define MUI_FINISHPAGE_SHOWREADME_FUNCTION StartWithWindows
!define MUI_FINISHPAGE_LINK "Read the guide"
!define MUI_FINISHPAGE_LINK_LOCATION "${GUIDE}"
!define MUI_PAGE_CUSTOMFUNCTION_SHOW FinishPageShown
!define MUI_PAGE_CUSTOMFUNCTION_LEAVE FinishPageLeft
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
UninstPage custom un.PurgePage un.PurgePageLeave
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "English"

!ifdef SIGN
!uninstfinalize '${SIGN} "%1"' = 0
!endif

Var wasRunning
Var purge
Var purgeCheckBox

; Leaves "1" in the register when the program runs, "0" otherwise: it holds a named event for as long as it lives. An event that may not
; be opened is one of a copy with more rights, which has a window here, or of another user, who is none of our business.
!macro IsRunning RESULT
  System::Call 'kernel32::OpenEventW(i ${SYNCHRONIZE}, i 0, w "${RUNNING_EVENT}") p .R8 ?e'
  Pop ${RESULT}
  ${If} $R8 P<> 0
    System::Call 'kernel32::CloseHandle(p R8)'
    StrCpy ${RESULT} 1
  ${ElseIf} ${RESULT} == ${ERROR_ACCESS_DENIED}
    FindWindow $R8 "VANTORAW" "Vantora"
    ${If} $R8 P<> 0
      StrCpy ${RESULT} 1
    ${Else}
      StrCpy ${RESULT} 0
    ${EndIf}
  ${Else}
    StrCpy ${RESULT} 0
  ${EndIf}
!macroend

; Asks a running program to end, by the given copy's own switch, and waits until it has. Leaves "1" in the register when none runs.
!macro EndProgram COPY RESULT
  !insertmacro IsRunning ${RESULT}
  ${If} ${RESULT} == 1
    DetailPrint "Ending the running Vantora"
    Exec '"${COPY}" -terminate' ; not waited for: the program may hang
    StrCpy $R9 0
    ${Do}
      !insertmacro IsRunning ${RESULT}
      ${If} ${RESULT} == 0
        ${Break}
      ${EndIf}
      IntOp $R9 $R9 + 1
      Sleep ${END_WAIT_MS}
    ${LoopUntil} $R9 >= ${END_WAITS}
  ${EndIf}
  IntOp ${RESULT} 1 - ${RESULT}
!macroend

; An elevated program protects its download and the folder for it; the next one may not be elevated and must be able to use both.
Function GiveDownloadBack
  ${If} $EXEDIR == "$TEMP\Vantora"
    nsExec::Exec '"$SYSDIR\icacls.exe" "$EXEDIR" /setintegritylevel (OI)(CI)medium'
    Pop $R0
    nsExec::Exec '"$SYSDIR\icacls.exe" "$EXEPATH" /setintegritylevel medium'
    Pop $R0
  ${EndIf}
FunctionEnd

; Says why, leaves everything as it was and starts again what was running: an update that cannot be made must not cost the user the
; monitor.
!macro GiveUp EXIT_CODE REASON
  MessageBox MB_OK|MB_ICONSTOP "${REASON}" /SD IDOK
  SetErrorLevel ${EXIT_CODE}
  Call GiveUp
!macroend
Function GiveUp
  Delete "$INSTDIR\vantora.exe.new"
  WriteRegDWORD HKCU "${SETTINGS_KEY}" "UpdateFinished" 0
  Call GiveDownloadBack
  ${If} $wasRunning == 1
  ${AndIf} ${FileExists} "$INSTDIR\vantora.exe"
    Exec '"$INSTDIR\vantora.exe" /tray'
  ${EndIf}
  Quit
FunctionEnd

; The same value as the program's own menu item writes.
Function StartWithWindows
  WriteRegStr HKCU "${RUN_KEY}" "Vantora" '"$INSTDIR\vantora.exe" /tray'
FunctionEnd

Function FinishPageShown
  ReadRegStr $R0 HKCU "${RUN_KEY}" "Vantora"
  ${If} $R0 != ""
    ${NSD_Check} $mui.FinishPage.ShowReadme
  ${EndIf}
FunctionEnd

; Before what is ticked is done.
Function FinishPageLeft
  DeleteRegValue HKCU "${RUN_KEY}" "Vantora"
FunctionEnd

Section "Vantora"
  !insertmacro IsRunning $wasRunning
  ${If} $wasRunning == 1
    MessageBox MB_OKCANCEL|MB_ICONINFORMATION "Vantora is running. It is ended now to be replaced; the last page offers to start it again." /SD IDOK IDOK go_on
    SetErrorLevel ${EXIT_CANCELLED}
    Quit
    go_on:
  ${EndIf}
  ; The program's own update starts this installer and ends at once: it may be gone already, and says so in its settings.
  ReadRegDWORD $R0 HKCU "${SETTINGS_KEY}" "UpdateFinished"
  ${If} $R0 == 1
    StrCpy $wasRunning 1
  ${EndIf}

  InitPluginsDir
  SetOutPath "$INSTDIR"
  SetOverwrite try
  ClearErrors
  File "/oname=vantora.exe.new" "${PROGRAM}"
  ${If} ${Errors}
    !insertmacro GiveUp ${EXIT_FAILED} "$INSTDIR cannot be written to."
  ${EndIf}
  ; A copy under the name that its switches are known by, whatever is or is not installed.
  CopyFiles /SILENT "$INSTDIR\vantora.exe.new" "$PLUGINSDIR\vantora.exe"
  !insertmacro EndProgram "$PLUGINSDIR\vantora.exe" $R0
  ${If} $R0 == 0
    !insertmacro GiveUp ${EXIT_STILL_RUNNING} "Vantora is still running and cannot be replaced. Please exit it and run the installer again."
  ${EndIf}

  ClearErrors
  Delete "$INSTDIR\vantora.exe"
  ${IfNot} ${Errors}
    Rename "$INSTDIR\vantora.exe.new" "$INSTDIR\vantora.exe"
  ${EndIf}
  ${If} ${Errors}
    !insertmacro GiveUp ${EXIT_FAILED} "$INSTDIR\vantora.exe cannot be replaced. Please try again later."
  ${EndIf}
  File "/oname=LICENSE.txt" "${ROOT}/LICENSE"
  File "/oname=vantora-console.exe" "${CONSOLE}"
  WriteUninstaller "$INSTDIR\uninstall.exe"
  CreateShortcut "$SMPROGRAMS\Vantora.lnk" "$INSTDIR\vantora.exe"

  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayName" "Vantora"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayVersion" "${VERSION}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "Publisher" "Vantora"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "URLInfoAbout" "${PRODUCT_PAGE}"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "DisplayIcon" "$INSTDIR\vantora.exe,0"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "InstallLocation" "$INSTDIR"
  WriteRegStr HKCU "${UNINSTALL_KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
  WriteRegStr HKCU "${UNINSTALL_KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "EstimatedSize" ${SIZE_KB}
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoModify" 1
  WriteRegDWORD HKCU "${UNINSTALL_KEY}" "NoRepair" 1
SectionEnd

Function .onInstSuccess
  Call GiveDownloadBack
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/AUTOSTART" $R1
  ${IfNot} ${Errors}
    Call StartWithWindows
  ${EndIf}
  ; With its pages shown, the installer offers the start at its end.
  ${If} ${Silent}
  ${AndIf} $wasRunning == 1
    Exec '"$INSTDIR\vantora.exe" /tray'
  ${EndIf}
FunctionEnd

Function un.onInit
  StrCpy $purge 0
  ${GetParameters} $R0
  ClearErrors
  ${GetOptions} $R0 "/PURGE" $R1
  ${IfNot} ${Errors}
    StrCpy $purge 1
  ${EndIf}
FunctionEnd

Function un.PurgePage
  !insertmacro MUI_HEADER_TEXT "Rules and settings" "Choose what happens to your own data."
  nsDialogs::Create 1018
  Pop $R0
  ${NSD_CreateLabel} 0 0 100% 24u "Your rules, the alert log and the settings are kept, so that a later installation finds them again."
  Pop $R0
  ${NSD_CreateCheckbox} 0 32u 100% 12u "&Delete my rules, alert log and settings too"
  Pop $purgeCheckBox
  ${If} $purge == 1
    ${NSD_Check} $purgeCheckBox
  ${EndIf}
  nsDialogs::Show
FunctionEnd

Function un.PurgePageLeave
  ${NSD_GetState} $purgeCheckBox $purge
FunctionEnd

; The task starts whatever lies at the program's path, with all rights, at every logon: it must not outlive the program.
Function un.RemoveAdminTask
  ExecWait '"$INSTDIR\vantora.exe" --remove-admin-task' $R0
  ${If} $R0 != 0
  ${AndIfNot} ${Silent}
    MessageBox MB_OK|MB_ICONINFORMATION "Vantora is set to start as administrator at logon. Only an administrator can remove the task that does this; Windows asks for permission next."
    ExecShellWait "runas" "$INSTDIR\vantora.exe" "--remove-admin-task"
    ExecWait '"$INSTDIR\vantora.exe" --remove-admin-task' $R0
  ${EndIf}
  ${If} $R0 != 0
    MessageBox MB_OK|MB_ICONSTOP "The task that starts Vantora as administrator at logon could not be removed. Vantora stays installed." /SD IDOK
    SetErrorLevel ${EXIT_TASK_STAYS}
    Quit
  ${EndIf}
FunctionEnd

Section "Uninstall"
  ${If} ${FileExists} "$INSTDIR\vantora.exe"
    Call un.RemoveAdminTask
  ${EndIf}
  !insertmacro EndProgram "$INSTDIR\vantora.exe" $R0
  ${If} $R0 == 0
    MessageBox MB_OK|MB_ICONSTOP "Vantora is still running. Please exit it and uninstall it again." /SD IDOK
    SetErrorLevel ${EXIT_STILL_RUNNING}
    Quit
  ${EndIf}

  DeleteRegValue HKCU "${RUN_KEY}" "Vantora"

  Delete "$INSTDIR\vantora.exe"
  Delete "$INSTDIR\vantora.exe.new"
  Delete "$INSTDIR\LICENSE.txt"
  Delete "$INSTDIR\vantora-console.exe"
  Delete "$INSTDIR\uninstall.exe"
  RMDir "$INSTDIR"
  Delete "$SMPROGRAMS\Vantora.lnk"
  Delete "$TEMP\Vantora\vantorasetup.exe"
  RMDir "$TEMP\Vantora"

  ${If} $purge == 1
    ; By name: what the user has put beside them is not ours to delete.
    Delete "$APPDATA\Vantora\rules.csv"
    Delete "$APPDATA\Vantora\alerts.log"
    RMDir "$APPDATA\Vantora"
    DeleteRegKey HKCU "${SETTINGS_KEY}"
  ${EndIf}
  DeleteRegKey HKCU "${UNINSTALL_KEY}"
SectionEnd
