// A host in Delphi or Free Pascal: both calls, guarded. Build it for Win64, with the two DLLs beside the program.
// A test compares the declarations of this file with guarded_calls.h and publisher.h, which say what they mean.
program Host;

{$ifdef FPC}{$mode delphi}{$endif}
{$APPTYPE CONSOLE}

uses
  SysUtils, Math;

const
  NothingReported = 0;
  Reported = 1;
  UntrustedAddress = 5;
  MessageWithheld = 6;
  PublisherTrusted = 100;

type
  TGuardedCall = record
    size: UInt32;
    languageId: Int32;
    productName: PWideChar;
    productVersion: PWideChar;
    apiKey: PWideChar;
    text: PWideChar;
    textCapacity: UInt32;
    resultCode: UInt32;
    isTextCut: UInt32;
    options: UInt32;
    trustedHosts: PWideChar;
  end;

const Guard = 'ProductServicesGuard.dll';
function GuardedCheckForUpdates(var call: TGuardedCall): UInt32; cdecl; external Guard;
function GuardedUpgrade(var call: TGuardedCall): UInt32; cdecl; external Guard;
function UseWindowsProxy(serviceAddress, text: PWideChar; textCapacity: UInt32): UInt32; cdecl; external Guard;
function VerifyPublisher(path, publisher, text: PWideChar; textCapacity: UInt32): UInt32; cdecl; external Guard;

var
  text: array[0..65535] of WideChar;
  call: TGuardedCall;

procedure Print(const name: string; outcome: UInt32);
begin
  case outcome of
    NothingReported: WriteLn(name, ': nothing was reported');
    Reported: WriteLn(name, ': ', call.resultCode, ': ', string(text)); // with 200 a trusted address to download from
    UntrustedAddress: WriteLn(name, ': not to be opened: ', string(text));
    MessageWithheld: WriteLn(name, ': not shown, since the check is quiet: ', string(text));
  else
    WriteLn(name, ': error: ', string(text));
  end;
end;

begin
  FillChar(call, SizeOf(call), 0);
  call.size := SizeOf(call);
  call.languageId := 120;
  call.productName := 'Example Draft';
  call.productVersion := '2026.1';
  call.apiKey := 'draft20-7k2m9q-x4v8p1w';
  call.text := @text;
  call.textCapacity := Length(text);
  call.trustedHosts := 'localhost:18443';
  // In a host of its own arithmetic: put the former mask back after the calls.
  SetExceptionMask([exInvalidOp, exDenormalized, exZeroDivide, exOverflow, exUnderflow, exPrecision]);
  Print('CheckForUpdates', GuardedCheckForUpdates(call));
  Print('Upgrade', GuardedUpgrade(call)); // in a host with windows, on the thread that shows them
end.
