; The installer: for the one user who runs it, so that nobody needs an administrator. Removing the
; program leaves the user's data (the registered sites and patterns) where it is.
;   -DVERSION= -DSTAGE= (the folder of the program) -DOUTPUT= -DICON=
Target amd64-unicode
!include "MUI2.nsh"
!include "FileFunc.nsh"

!define KEY "Software\Microsoft\Windows\CurrentVersion\Uninstall\VenloFtp"

Name "Venlo FTP"
OutFile "${OUTPUT}"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\VenloFtp"
InstallDirRegKey HKCU "${KEY}" "InstallLocation"
SetCompressor /SOLID lzma
ManifestDPIAware true
BrandingText "Venlo FTP ${VERSION}"

VIProductVersion "${VERSION}.0"
VIAddVersionKey /LANG=1041 "ProductName" "Venlo FTP"
VIAddVersionKey /LANG=1041 "ProductVersion" "${VERSION}"
VIAddVersionKey /LANG=1041 "FileVersion" "${VERSION}"
VIAddVersionKey /LANG=1041 "FileDescription" "Venlo FTP ｾｯﾄｱｯﾌﾟ"
VIAddVersionKey /LANG=1041 "LegalCopyright" "The Venlo FTP developers"

!define MUI_ICON "${ICON}"
!define MUI_UNICON "${ICON}"
!define MUI_FINISHPAGE_RUN "$INSTDIR\VenloFtp.exe"
!insertmacro MUI_PAGE_WELCOME
!insertmacro MUI_PAGE_LICENSE "${STAGE}\licences\VenloFtp.txt"
!insertmacro MUI_PAGE_DIRECTORY
!insertmacro MUI_PAGE_INSTFILES
!insertmacro MUI_PAGE_FINISH
!insertmacro MUI_UNPAGE_CONFIRM
!insertmacro MUI_UNPAGE_INSTFILES
!insertmacro MUI_LANGUAGE "Japanese"

; A program that runs holds its files: they could be replaced only in part.
!macro RefuseWhileRunning
    ${If} ${FileExists} "$INSTDIR\VenloFtp.exe"
        ClearErrors
        FileOpen $0 "$INSTDIR\VenloFtp.exe" a
        ${If} ${Errors}
            MessageBox MB_OK|MB_ICONEXCLAMATION \
                "Venlo FTP が実行中です。終了してから、もう一度実行してください。" /SD IDOK
            Abort
        ${EndIf}
        FileClose $0
    ${EndIf}
!macroend

Section
    !insertmacro RefuseWhileRunning
    SetOutPath "$INSTDIR"
    ; Says where the user's data is: an administrator's choice stays.
    SetOverwrite off
    File "${STAGE}\UserData.ini"
    SetOverwrite on
    File /r /x UserData.ini "${STAGE}\*.*"

    CreateShortCut "$SMPROGRAMS\Venlo FTP.lnk" "$INSTDIR\VenloFtp.exe"
    WriteUninstaller "$INSTDIR\uninstall.exe"
    WriteRegStr HKCU "${KEY}" "DisplayName" "Venlo FTP"
    WriteRegStr HKCU "${KEY}" "DisplayVersion" "${VERSION}"
    WriteRegStr HKCU "${KEY}" "DisplayIcon" "$INSTDIR\VenloFtp.exe"
    WriteRegStr HKCU "${KEY}" "Publisher" "Venlo"
    WriteRegStr HKCU "${KEY}" "InstallLocation" "$INSTDIR"
    WriteRegStr HKCU "${KEY}" "UninstallString" '"$INSTDIR\uninstall.exe"'
    WriteRegStr HKCU "${KEY}" "QuietUninstallString" '"$INSTDIR\uninstall.exe" /S'
    WriteRegDWORD HKCU "${KEY}" "NoModify" 1
    WriteRegDWORD HKCU "${KEY}" "NoRepair" 1
    ${GetSize} "$INSTDIR" "/S=0K" $0 $1 $2
    WriteRegDWORD HKCU "${KEY}" "EstimatedSize" $0
SectionEnd

Section "Uninstall"
    !insertmacro RefuseWhileRunning
    ; By name: the folder may be one that holds other things. "usData", where UserData.ini puts the
    ; user's data beside the program, is among what stays.
    RMDir /r "$INSTDIR\apData"
    RMDir /r "$INSTDIR\licences"
    RMDir /r "$INSTDIR\platforms"
    RMDir /r "$INSTDIR\styles"
    RMDir /r "$INSTDIR\tls"
    RMDir /r "$INSTDIR\translations"
    Delete "$INSTDIR\*.dll"
    Delete "$INSTDIR\VenloFtp.exe"
    Delete "$INSTDIR\venlo-register.exe"
    Delete "$INSTDIR\UserData.ini"
    Delete "$INSTDIR\uninstall.exe"
    RMDir "$INSTDIR"
    Delete "$SMPROGRAMS\Venlo FTP.lnk"
    DeleteRegValue HKCU "Software\VenloTools\Path" "VenloFtp"
    DeleteRegKey HKCU "${KEY}"
SectionEnd
