// A host in C#: both calls, guarded. Build it as x64, with ProductServicesGuard.dll in the folder of the program:
//
//     csc /platform:x64 host.cs
//
// The declarations are those of guarded_calls.h and publisher.h, which describe them.
using System;
using System.Runtime.InteropServices;
using System.Text;
using System.Threading;

[assembly: DefaultDllImportSearchPaths(DllImportSearchPath.AssemblyDirectory)]

[StructLayout(LayoutKind.Sequential, CharSet = CharSet.Unicode)]
struct GuardedCallParams
{
    public uint size;
    public int languageId;
    public string productName;
    public string productVersion;
    public string apiKey;
    public string trustedHosts;
    public uint options;
    public uint timeLimitMs;
    public IntPtr cancelFlag;
    public IntPtr resultText;
    public uint resultTextCapacity;
    public uint resultCode;
    public uint isTextTruncated;
    public uint reserved;
}

static class Host
{
    const uint OutcomeNewerRelease = 1, OutcomeUpToDate = 2, OutcomeBrowserOpened = 3, OutcomeUserQuit = 4;
    const uint OutcomeUnreachable = 9, OutcomeTimedOut = 10, OutcomeCancelled = 11;
    const uint OutcomeUntrustedCertificate = 12, OutcomeUntrustedAddress = 13;
    const uint OptionQuiet = 1, OptionSystemProxy = 8;
    const uint PublisherTrusted = 100;
    const int LanguageEn = 120;
    const int TextCapacity = 4096;

    delegate uint GuardedFunction(ref GuardedCallParams call);

    [DllImport("ProductServicesGuard.dll", CallingConvention = CallingConvention.Cdecl)]
    static extern uint GuardedCheckForUpdates(ref GuardedCallParams call);
    [DllImport("ProductServicesGuard.dll", CallingConvention = CallingConvention.Cdecl)]
    static extern uint GuardedUpgrade(ref GuardedCallParams call);
    [DllImport("ProductServicesGuard.dll", CallingConvention = CallingConvention.Cdecl, CharSet = CharSet.Unicode)]
    static extern uint VerifyPublisher(string path, string publisher, IntPtr text, uint textCapacity);

    // Four bytes at a fixed address.
    static readonly IntPtr isEnding = Marshal.AllocHGlobal(4);

    static uint Call(GuardedFunction function, uint options, out string text)
    {
        var call = new GuardedCallParams
        {
            size = (uint)Marshal.SizeOf(typeof(GuardedCallParams)), languageId = LanguageEn,
            productName = "Example Draft", productVersion = "2026.1", apiKey = "draft20-7k2m9q-x4v8p1w",
            trustedHosts = "localhost:18443", options = options | OptionSystemProxy, timeLimitMs = 15000,
            cancelFlag = isEnding, resultText = Marshal.AllocHGlobal(2 * TextCapacity),
            resultTextCapacity = (uint)TextCapacity
        };
        Marshal.WriteInt16(call.resultText, 0);
        uint outcome = function(ref call);
        text = Marshal.PtrToStringUni(call.resultText);
        Marshal.FreeHGlobal(call.resultText);
        return outcome;
    }

    static string Describe(uint outcome, string text)
    {
        switch (outcome)
        {
            // The URL is https and on a trusted host, so it may be opened.
            case OutcomeNewerRelease: return "a newer release is at " + text;
            case OutcomeUpToDate: return "up to date";
            case OutcomeBrowserOpened: return "the browser shows the purchase page";
            case OutcomeUserQuit: return "left by the user";
            case OutcomeUntrustedCertificate:
            case OutcomeUntrustedAddress: return "not secure, ask your administrator: " + text;
            case OutcomeUnreachable:
            case OutcomeTimedOut: return "no connection, try again later: " + text;
            case OutcomeCancelled: return "cancelled";
            default: return "failed with outcome " + outcome + ": " + text;
        }
    }

    [STAThread] // this thread shows windows
    static void Main()
    {
        Console.OutputEncoding = new UTF8Encoding(false);
        Marshal.WriteInt32(isEnding, 0);
        uint outcome = 0;
        string text = null;

        var worker = new Thread(() => outcome = Call(GuardedCheckForUpdates, OptionQuiet, out text));
        worker.Start();
        // The host's window is open here. When it is closed, Marshal.WriteInt32(isEnding, 1) ends a check that is
        // still running.
        worker.Join();
        Console.WriteLine("CheckForUpdates: " + Describe(outcome, text));

        outcome = Call(GuardedUpgrade, 0, out text);
        Console.WriteLine("Upgrade: " + Describe(outcome, text));
    }
}
