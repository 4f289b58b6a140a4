/* A host in C, without support for exceptions. Each argument is a call, with its room and the size of the
 * record. */
#include "product_services/guarded_calls.h"

#include <stdio.h>
#include <wchar.h>
#include <windows.h>

enum
{
    Room = 300000
};
static wchar_t text[Room];

static uint32_t Call(char name, GuardedCall* call)
{
    HostContext bare = {call->productName, call->productVersion, call->apiKey, 120, 0, 0, text, 0, 0, 0};
    GuardedCall empty = {.size = sizeof empty, .textCapacity = 1};
    switch (name) {
    case 'c':
        return GuardedCheckForUpdates(call);
    case 'u':
        return GuardedUpgrade(call);
    case '0':
        return GuardedUpgrade(&empty) + GuardedUpgrade(NULL);
    case 'p':
        return UseWindowsProxy(L"https://127.0.0.1:18443", text, Room);
    case 'n':
        return GetEnvironmentVariableW(L"no_proxy", text, Room);
    default:
        ((void (*)(HostContext*))(void*)GetProcAddress(
            LoadLibraryW(L"ProductServices.dll"), "CheckForUpdates"))(&bare);
    }
    return bare.resultCode;
}

int main(int count, char** arguments)
{
    for (int i = 1; i < count; ++i) {
        GuardedCall call = {sizeof call, 120, L"Guarded", L"1", L"api-key", text, Room, 0, 0, 0};
        char name = 0;
        sscanf(arguments[i], "%c%u,%u", &name, &call.textCapacity, &call.size);
        wmemset(text, L'#', Room);
        printf("%c %u", name, Call(name, &call));
        int written = Room;
        for (; written > 0 && text[written - 1] == L'#'; --written) {
        }
        printf(" code %d cut %u wrote %d ", (int)call.resultCode, call.isTextCut, written);
        for (int unit = written > 151 ? written - 151 : 0; unit < written - 1; ++unit) {
            printf(text[unit] < 128 ? "%c" : "<%X>", text[unit]);
        }
        puts("");
    }
    return 0;
}
