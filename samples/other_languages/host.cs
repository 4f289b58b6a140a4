// A host in C#: both calls, guarded. Build it as x64, with the two DLLs beside the program:
//
//     csc /platform:x64 host.cs
//
// A test compares the declarations of this file with guarded_calls.h and publisher.h, which say what they mean.
using System;
using System.Runtime.InteropServices;

[StructLayout(LayoutKind.Sequential, CharSet = CharSet.Unicode)]
struct GuardedCall
{
    public uint size;
    public int languageId;
    public string productName;
    public string productVersion;
    public string apiKey;
    public IntPtr text;
    public uint textCapacity;
    public uint resultCode;
    public uint isTextCut;
    public uint options;
    public string trustedHosts;
}

static class Host
{
    const uint NothingReported = 0, Reported = 1, UntrustedAddress = 5, MessageWithheld = 6, PublisherTrusted = 100;
    const uint TextCapacity = 65536;

    [DllImport("ProductServicesGuard.dll")]
    static extern uint GuardedCheckForUpdates(ref GuardedCall call);
    [DllImport("ProductServicesGuard.dll")]
    static extern uint GuardedUpgrade(ref GuardedCall call);
    [DllImport("ProductServicesGuard.dll", CharSet = CharSet.Unicode)]
    static extern uint UseWindowsProxy(string serviceAddress, IntPtr text, uint textCapacity);
    [DllImport("ProductServicesGuard.dll", CharSet = CharSet.Unicode)]
    static extern uint VerifyPublisher(string path, string publisher, IntPtr text, uint textCapacity);

    static string Describe(uint outcome, GuardedCall call)
    {
        string text = Marshal.PtrToStringUni(call.text);
        switch (outcome)
        {
            case NothingReported: return "nothing was reported";
            case Reported: return call.resultCode + ": " + text; // with 200 a trusted address to download from
            case UntrustedAddress: return "not to be opened: " + text;
            case MessageWithheld: return "not shown, since the check is quiet: " + text;
            default: return "error: " + text;
        }
    }

    [STAThread] // and, in a host with windows, on the thread that shows them
    static void Main()
    {
        var call = new GuardedCall
        {
            size = (uint)Marshal.SizeOf(typeof(GuardedCall)), languageId = 120,
            productName = "Example Draft", productVersion = "2026.1", apiKey = "draft20-7k2m9q-x4v8p1w",
            text = Marshal.AllocHGlobal(2 * (int)TextCapacity), textCapacity = TextCapacity,
            trustedHosts = "localhost:18443"
        };
        Marshal.WriteInt16(call.text, 0); // an empty text, should the record be refused unread
        Console.WriteLine("CheckForUpdates: " + Describe(GuardedCheckForUpdates(ref call), call));
        Console.WriteLine("Upgrade: " + Describe(GuardedUpgrade(ref call), call));
        Marshal.FreeHGlobal(call.text);
    }
}
