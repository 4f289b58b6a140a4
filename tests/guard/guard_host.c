/* A host in C, without support for exceptions. Each argument is a call, which prints a line, or a setting. */
#include "product_services/guarded_calls.h"

#include <stdio.h>
#include <stdlib.h>
#include <wchar.h>
#include <windows.h>

enum { Room = 300000 };
static wchar_t text[Room + 1];
static GuardedCall call = {sizeof(GuardedCall), 120, L"Guarded", L"1", L"api-key", text, Room, 0, 0, 0};
static HostContext bare = {L"Guarded", L"1", L"api-key", 120, 0, 0, text, 0, 0, 0};

static void CallBare(void)
{
    typedef void (*Export)(HostContext*);
    ((Export)(void*)GetProcAddress(LoadLibraryW(L"ProductServices.dll"), "CheckForUpdates"))(&bare);
}

int main(int count, char** arguments)
{
    for (int i = 1; i < count; ++i) {
        uint32_t outcome = 0;
        wmemset(text, L'#', Room + 1);
        switch (arguments[i][0]) {
        case 'c': outcome = GuardedCheckForUpdates(&call); break;
        case 'u': outcome = GuardedUpgrade(&call); break;
        case 'b': CallBare(); break;
        case 'p': outcome = UseWindowsProxy(L"https://127.0.0.1:18443", text, call.textCapacity); break;
        case 'n': outcome = GetEnvironmentVariableW(L"no_proxy", text, Room) > 0; break;
        case '0': call.text = NULL; call.productName = call.productVersion = call.apiKey = NULL; continue;
        case 'r': call.textCapacity = (uint32_t)atoi(arguments[i] + 1); continue;
        case 's': call.size = (uint32_t)atoi(arguments[i] + 1); continue;
        }
        /* The length and the first 99 units, as far as the buffer was written to. */
        const size_t length = wcscspn(text, L"#");
        printf("%c %u %d cut %u length %u ", arguments[i][0], outcome, (int)call.resultCode, call.isTextCut, (unsigned)length);
        for (size_t unit = 0; unit < length && unit < 99 && text[unit]; ++unit) {
            printf(text[unit] < 128 ? "%c" : "<%X>", text[unit]);
        }
        puts("");
    }
    return 0;
}
