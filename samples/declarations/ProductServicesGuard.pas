// The guarded calls for Delphi. A test compares names, sizes and offsets with those of guarded_calls.h, which says what
// they mean; beyond that they are untried.
unit ProductServicesGuard;

interface

type
  TGuardedCall = record
    size: UInt32;                   // SizeOf(TGuardedCall)
    languageId: Int32;
    productName: PWideChar;
    productVersion: PWideChar;
    apiKey: PWideChar;
    text: PWideChar;
    textCapacity: UInt32;
    resultCode: UInt32;
    isTextCut: UInt32;
    options: UInt32;                // 1: a quiet check, 2: the host's scaling
    trustedHosts: PWideChar;        // "example.com;*.example.com", or nil for any
  end;

function GuardedCheckForUpdates(var call: TGuardedCall): UInt32; cdecl; external 'ProductServicesGuard.dll';
function GuardedUpgrade(var call: TGuardedCall): UInt32; cdecl; external 'ProductServicesGuard.dll';
function UseWindowsProxy(serviceAddress, text: PWideChar; textCapacity: UInt32): UInt32; cdecl;
  external 'ProductServicesGuard.dll';

implementation

end.
