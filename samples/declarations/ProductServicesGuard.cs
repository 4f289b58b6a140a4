// The guarded calls for C#. A test compares names, sizes and offsets with those of guarded_calls.h, which says what they
// mean; beyond that they are untried.
using System;
using System.Runtime.InteropServices;

[StructLayout(LayoutKind.Sequential, CharSet = CharSet.Unicode)]
struct GuardedCall
{
    public uint size;               // Marshal.SizeOf<GuardedCall>()
    public int languageId;
    public string productName;
    public string productVersion;
    public string apiKey;
    public IntPtr text;             // Marshal.AllocHGlobal(2 * 65536)
    public uint textCapacity;       // 65536
    public uint resultCode;
    public uint isTextCut;
    public uint options;            // 1: a quiet check, 2: the host's scaling
    public string trustedHosts;     // "example.com;*.example.com", or null for any
}

static class ProductServicesGuard
{
    [DllImport("ProductServicesGuard.dll")]
    public static extern uint GuardedCheckForUpdates(ref GuardedCall call);
    [DllImport("ProductServicesGuard.dll")]
    public static extern uint GuardedUpgrade(ref GuardedCall call);
    [DllImport("ProductServicesGuard.dll", CharSet = CharSet.Unicode)]
    public static extern uint UseWindowsProxy(string serviceAddress, IntPtr text, uint textCapacity);
}
