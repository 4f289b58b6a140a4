/* A host in C, without support for exceptions. Each argument is a call or a setting; each call prints a line. */
#include "product_services/guarded_calls.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>
#include <windows.h>

enum { Room = 300000 };

static wchar_t buffer[Room + 1];
static GuardedCall call = {sizeof(GuardedCall), 120, L"Guarded", L"1", L"api-key", buffer, Room, 0, 0, 0};
static HostContext bare = {L"Guarded", L"1", L"api-key", 120, 0, 0, buffer, 0, 0, 0};

/* The last 90 units, and whether the unit behind the buffer is as it was. */
static void Print(const char* name, unsigned outcome, unsigned code)
{
    const size_t length = call.text && call.textCapacity ? wcslen(buffer) : 0;
    printf("%s %u %d %u %u ", name, outcome, (int)code, (unsigned)call.isTextCut, (unsigned)length);
    for (size_t i = length > 90 ? length - 90 : 0; i < length; ++i) {
        printf(buffer[i] < 128 ? "%c" : "\\u%04X", (unsigned)buffer[i]);
    }
    puts(buffer[call.textCapacity] == L'#' ? "" : " OVERRUN");
}

#define LAYOUT(type, member) \
    printf(#type "." #member " %u %u\n", (unsigned)offsetof(type, member), (unsigned)sizeof((type*)0)->member)

int main(int count, char** arguments)
{
    for (int i = 1; i < count; ++i) {
        const char* const argument = arguments[i];
        wmemset(buffer, L'#', Room + 1);
        if (strcmp(argument, "check") == 0) {
            const unsigned outcome = GuardedCheckForUpdates(&call);
            Print(argument, outcome, call.resultCode);
        } else if (strcmp(argument, "upgrade") == 0) {
            const unsigned outcome = GuardedUpgrade(&call);
            Print(argument, outcome, call.resultCode);
        } else if (strcmp(argument, "bare") == 0) {
            bare.resultCode = 0;
            CheckForUpdates(&bare);
            call.isTextCut = 0;
            Print(argument, 0, bare.resultCode);
        } else if (strcmp(argument, "proxy") == 0) {
            const unsigned found = UseWindowsProxy(L"https://127.0.0.1:18443", buffer, Room);
            Print(argument, found, 0);
            GetEnvironmentVariableW(L"no_proxy", buffer, Room);
            Print("no_proxy", 0, 0);
        } else if (strncmp(argument, "room=", 5) == 0) {
            call.textCapacity = (uint32_t)atoi(argument + 5);
        } else if (strcmp(argument, "null") == 0) {
            call.productName = call.productVersion = call.apiKey = NULL;
            call.text = NULL;
        } else if (strncmp(argument, "size=", 5) == 0) {
            call.size = (uint32_t)atoi(argument + 5);
        }
    }
    return 0;
}
