/* A host in C. Each argument is a call, with the capacity of its text and the size of its record, or
 * with the address whose proxy is asked for. */
#include "product_services/guarded_calls.h"

#include <stdio.h>
#include <wchar.h>
#include <windows.h>

#define ROOM 300000
static wchar_t text[ROOM];
static char bytes[3 * ROOM];
static wchar_t address[100];

static uint32_t CallBare(const GuardedCall* call)
{
    HostContext context = {
        .productName = call->productName, .productVersion = call->productVersion, .apiKey = L""};
    ((void (*)(HostContext*))(void (*)(void))GetProcAddress(
        LoadLibraryW(L"ProductServices.dll"), "CheckForUpdates"))(&context);
    return context.resultCode;
}

static uint32_t Call(char name, GuardedCall* call)
{
    return name == 'b'   ? CallBare(call)
           : name == 'c' ? GuardedCheckForUpdates(call)
           : name == 'p' ? UseWindowsProxy(address, text, ROOM)
           : name == 'n' ? GetEnvironmentVariableW(L"no_proxy", text, ROOM)
                         : GuardedUpgrade(name == '0' ? NULL : call);
}

int main(int count, char** arguments)
{
    for (int i = 1; i < count; ++i) {
        const char name = arguments[i][0];
        GuardedCall call = {sizeof call, 120, L"Guarded", L"1", L"api-key", name == 't' ? NULL : text,
                            ROOM,        0,   0,          0,          NULL};
        swprintf(address, 100, L"%hs", arguments[i] + 1);
        sscanf(arguments[i] + 1, "%u,%u", &call.textCapacity, &call.size);
        wmemset(text, L'#', ROOM);
        const uint32_t outcome = Call(name, &call);
        printf("%c %u %d %u ", name, outcome, (int)call.resultCode, call.isTextCut);
        const int length = WideCharToMultiByte(CP_UTF8, 0, text, ROOM, bytes, sizeof bytes, NULL, NULL);
        fwrite(bytes, 1, (size_t)length, stdout);
        puts("");
    }
    return 0;
}
