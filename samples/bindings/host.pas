// A host in Delphi or Free Pascal: both calls, guarded. Build it for Win64, with ProductServicesGuard.dll in its
// folder. The declarations are those of guarded_calls.h and publisher.h, which describe them.
program Host;

{$ifdef FPC}{$mode delphi}{$endif}
{$APPTYPE CONSOLE}

uses
  Classes, Math, SysUtils;

const
  OutcomeNewerRelease = 1;
  OutcomeUpToDate = 2;
  OutcomeBrowserOpened = 3;
  OutcomeUserQuit = 4;
  OutcomeUnreachable = 9;
  OutcomeTimedOut = 10;
  OutcomeCancelled = 11;
  OutcomeUntrustedCertificate = 12;
  OutcomeUntrustedAddress = 13;
  OptionQuiet = 1;
  OptionSystemProxy = 8;
  PublisherTrusted = 100;
  LanguageEn = 120;

type
  TGuardedCallParams = record
    size: UInt32;
    languageId: Int32;
    productName: PWideChar;
    productVersion: PWideChar;
    apiKey: PWideChar;
    trustedHosts: PWideChar;
    options: UInt32;
    timeLimitMs: UInt32;
    cancelFlag: Pointer;
    resultText: PWideChar;
    resultTextCapacity: UInt32;
    resultCode: UInt32;
    isTextTruncated: UInt32;
    reserved: UInt32;
  end;

  TGuardedFunction = function(var params: TGuardedCallParams): UInt32; cdecl;

  TQuietCheck = class(TThread)
  public
    Outcome: UInt32;
    Text: UnicodeString;
  protected
    procedure Execute; override;
  end;

const Guard = 'ProductServicesGuard.dll';
function GuardedCheckForUpdates(var params: TGuardedCallParams): UInt32; cdecl; external Guard;
function GuardedUpgrade(var params: TGuardedCallParams): UInt32; cdecl; external Guard;
function VerifyPublisher(path, publisher, text: PWideChar; textCapacity: UInt32): UInt32; cdecl; external Guard;

var
  isEnding: UInt32;

function Call(guarded: TGuardedFunction; options: UInt32; out text: UnicodeString): UInt32;
var
  params: TGuardedCallParams;
  buffer: array[0..4095] of WideChar;
  mask: set of exInvalidOp..exPrecision;
begin
  buffer[0] := #0;
  FillChar(params, SizeOf(params), 0);
  params.size := SizeOf(params);
  params.languageId := LanguageEn;
  params.productName := 'Example Draft';
  params.productVersion := '2026.1';
  params.apiKey := 'draft20-7k2m9q-x4v8p1w';
  params.trustedHosts := 'localhost:18443';
  params.options := options or OptionSystemProxy;
  params.timeLimitMs := 15000;
  params.cancelFlag := @isEnding;
  params.resultText := buffer;
  params.resultTextCapacity := Length(buffer);
  // Windows' DLLs expect masked floating-point exceptions: with all of them unmasked, a call may not return. A host
  // that loads the DLL with LoadLibrary must also mask them around that call, or loading fails.
  mask := SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]);
  try
    Result := guarded(params);
  finally
    SetExceptionMask(mask);
  end;
  text := buffer;
end;

procedure TQuietCheck.Execute;
begin
  Outcome := Call(GuardedCheckForUpdates, OptionQuiet, Text);
end;

procedure Print(const name: string; outcome: UInt32; const text: UnicodeString);
begin
  case outcome of
    // The URL is https and on a trusted host, so it may be opened.
    OutcomeNewerRelease: WriteLn(name, ': a newer release is at ', text);
    OutcomeUpToDate: WriteLn(name, ': up to date');
    OutcomeBrowserOpened: WriteLn(name, ': the browser shows the purchase page');
    OutcomeUserQuit: WriteLn(name, ': left by the user');
    OutcomeUntrustedCertificate, OutcomeUntrustedAddress:
      WriteLn(name, ': not secure, ask your administrator: ', text);
    OutcomeUnreachable, OutcomeTimedOut: WriteLn(name, ': no connection, try again later: ', text);
    OutcomeCancelled: WriteLn(name, ': cancelled');
  else
    WriteLn(name, ': failed with outcome ', outcome, ': ', text);
  end;
end;

var
  check: TQuietCheck;
  outcome: UInt32;
  text: UnicodeString;

begin
  SetTextCodePage(Output, CP_UTF8);
  check := TQuietCheck.Create(False);
  // The host's window is open here. When it is closed, isEnding := 1 ends a check that is still running.
  check.WaitFor;
  Print('CheckForUpdates', check.Outcome, check.Text);
  check.Free;

  outcome := Call(GuardedUpgrade, 0, text); // on the thread that shows the host's windows
  Print('Upgrade', outcome, text);
end.
