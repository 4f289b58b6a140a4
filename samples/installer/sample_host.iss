; A whole installer for one user, for Inno Setup 6.3 or later (in older versions, write x64 for x64compatible). Untried.
;
; For all users: PrivilegesRequired=admin; HKLM64 instead of HKCU, which is the 64-bit view in either install mode; and
; on the line of the language files Permissions: users-modify, which grants it on each file.
[Setup]
; The package's folders, with the host's program in bin.
SourceDir=..\..
OutputDir=.
OutputBaseFilename=example-draft-setup
AppName=Example Draft
AppVersion=2026.1
PrivilegesRequired=lowest
DefaultDirName={autopf}\Example Draft
ArchitecturesAllowed=x64compatible
ArchitecturesInstallIn64BitMode=x64compatible

[Files]
Source: "bin\SampleHost.exe"; DestDir: "{app}"
Source: "bin\ProductServicesGuard.dll"; DestDir: "{app}"
Source: "lang\*"; DestDir: "{app}\lang"; Flags: recursesubdirs
Source: "licenses\*"; DestDir: "{app}\licenses"
Source: "LICENSE"; DestDir: "{app}\licenses"; DestName: "product-services.txt"

[Icons]
Name: "{autoprograms}\Example Draft"; Filename: "{app}\SampleHost.exe"; WorkingDir: "{app}"

; The parents stand first because the uninstaller works from the last line to the first.
[Registry]
Root: HKCU; Subkey: "Software\Example Maker"; Flags: uninsdeletekeyifempty
Root: HKCU; Subkey: "Software\Example Maker\Products"; Flags: uninsdeletekeyifempty
Root: HKCU; Subkey: "Software\Example Maker\Products\Example Draft"; Flags: uninsdeletekeyifempty
Root: HKCU; Subkey: "Software\Example Maker\Products\Example Draft\2026.1"; ValueType: string; ValueName: "key"; ValueData: "DRAFT-2026-DEMO"; Flags: uninsdeletekey
Root: HKCU; Subkey: "Software\Example Maker\Products\Example Draft\2026.1"; ValueType: string; ValueName: "version"; ValueData: "2026.1"
; For administrators, in an installer for all users: /DisableUpdateCheck=1 and /DisableUpgradeCenter=1 set the policies.
Root: HKLM64; Subkey: "Software\Policies\Example Maker\ExampleMaker.ProductServices"; ValueType: dword; ValueName: "DisableUpdateCheck"; ValueData: "1"; Check: IsAdminInstallMode and IsWanted('DisableUpdateCheck'); Flags: uninsdeletevalue uninsdeletekeyifempty
Root: HKLM64; Subkey: "Software\Policies\Example Maker\ExampleMaker.ProductServices"; ValueType: dword; ValueName: "DisableUpgradeCenter"; ValueData: "1"; Check: IsAdminInstallMode and IsWanted('DisableUpgradeCenter'); Flags: uninsdeletevalue uninsdeletekeyifempty

[Code]
function IsWanted(Parameter: String): Boolean;
begin
  Result := ExpandConstant('{param:' + Parameter + '|0}') = '1';
end;
