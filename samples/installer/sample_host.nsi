; A whole installer for one user, for NSIS 3.08. Tried under Wine as a 64-bit installer (Target amd64-unicode in
; Debian's NSIS).
;
; For all users (untried): RequestExecutionLevel admin; InstallDir "$PROGRAMFILES64\Example Draft"; HKLM instead of
; HKCU; SetShellVarContext all first in both sections; and after the files
; ExecWait '"$SYSDIR\icacls.exe" "$INSTDIR\lang" /grant *S-1-5-32-545:(OI)(IO)M'
; For administrators, such an installer then sets the policies with /DisableUpdateCheck=1 and /DisableUpgradeCenter=1.

; The package's folders, with the host's program in bin.
!cd "../.."
Name "Example Draft"
OutFile "example-draft-setup.exe"
RequestExecutionLevel user
InstallDir "$LOCALAPPDATA\Programs\Example Draft"
!include "FileFunc.nsh"
Page instfiles
UninstPage instfiles
!define PRODUCTS "Software\Example Maker\Products"
!define POLICIES "Software\Policies\Example Maker\ExampleMaker.ProductServices"
!define UNINSTALL "Software\Microsoft\Windows\CurrentVersion\Uninstall\Example Draft"

; Only an installer for all users may write there.
!macro SetPolicy NAME
  ${GetParameters} $0
  ClearErrors
  ${GetOptions} $0 "/${NAME}=" $1
  StrCmp $1 "1" 0 +2
  WriteRegDWORD HKLM "${POLICIES}" "${NAME}" 1
!macroend

Section
  SetRegView 64         ; for HKLM, from a 32-bit installer
  SetOutPath "$INSTDIR" ; becomes the working directory of the shortcut
  File "bin\SampleHost.exe" "bin\ProductServicesGuard.dll"
  File /r "lang" "licenses"
  File "/oname=licenses\product-services.txt" "LICENSE"
  WriteRegStr HKCU "${PRODUCTS}\Example Draft\2026.1" "key" "DRAFT-2026-DEMO"
  WriteRegStr HKCU "${PRODUCTS}\Example Draft\2026.1" "version" "2026.1"
  CreateShortcut "$SMPROGRAMS\Example Draft.lnk" "$INSTDIR\SampleHost.exe"
  !insertmacro SetPolicy DisableUpdateCheck
  !insertmacro SetPolicy DisableUpgradeCenter
  WriteUninstaller "$INSTDIR\Uninstall.exe"
  WriteRegStr HKCU "${UNINSTALL}" "DisplayName" "Example Draft"
  WriteRegStr HKCU "${UNINSTALL}" "UninstallString" '"$INSTDIR\Uninstall.exe"'
SectionEnd

Section Uninstall
  SetRegView 64
  DeleteRegKey HKCU "${UNINSTALL}"
  DeleteRegValue HKLM "${POLICIES}" "DisableUpdateCheck"
  DeleteRegValue HKLM "${POLICIES}" "DisableUpgradeCenter"
  DeleteRegKey /ifempty HKLM "${POLICIES}"
  DeleteRegKey /ifempty HKLM "Software\Policies\Example Maker"
  DeleteRegKey HKCU "${PRODUCTS}\Example Draft\2026.1"
  DeleteRegKey /ifempty HKCU "${PRODUCTS}\Example Draft"
  DeleteRegKey /ifempty HKCU "${PRODUCTS}"
  DeleteRegKey /ifempty HKCU "Software\Example Maker"
  Delete "$SMPROGRAMS\Example Draft.lnk"
  Delete "$INSTDIR\SampleHost.exe"
  Delete "$INSTDIR\ProductServicesGuard.dll"
  RMDir /r "$INSTDIR\lang"
  RMDir /r "$INSTDIR\licenses"
  Delete "$INSTDIR\Uninstall.exe"
  RMDir "$INSTDIR"
SectionEnd
