/* A host in C. Each argument is what it does, or the address whose proxy it asks for; it prints a line for
 * each. */
#include "product_services/guarded_calls.h"

#include <stdio.h>
#include <string.h>
#include <wchar.h>
#include <windows.h>

#define CAPACITY 1000
static wchar_t text[CAPACITY];

/* Leaves the text as it is: an empty API key ends the call at once. */
static uint32_t CallBare(void)
{
    HostContext context = {.productName = L"Guarded", .productVersion = L"1", .apiKey = L""};
    const HMODULE library = LoadLibraryW(L"ProductServices.dll");
    void (*check)(void) = (void (*)(void))GetProcAddress(library, "CheckForUpdates");
    ((void (*)(HostContext*))check)(&context);
    return context.resultCode;
}

static GuardedCall MakeCall(void)
{
    GuardedCall call;
    memset(&call, 0, sizeof call);
    call.size = sizeof call;
    call.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
    call.productName = L"Guarded";
    call.productVersion = L"1";
    call.apiKey = L"api-key";
    call.text = text;
    call.textCapacity = CAPACITY;
    return call;
}

/* What the call returned, and the code where the library was asked. */
static void Do(const char* name)
{
    GuardedCall call = MakeCall();
    if (strcmp(name, "bare") == 0) {
        printf("bare %u", CallBare());
    } else if (strcmp(name, "check") == 0) {
        const uint32_t outcome = GuardedCheckForUpdates(&call);
        printf("check %u %d", outcome, (int)call.resultCode);
    } else if (strcmp(name, "upgrade") == 0) {
        const uint32_t outcome = GuardedUpgrade(&call);
        printf("upgrade %u %d", outcome, (int)call.resultCode);
    } else if (strcmp(name, "no_proxy") == 0) {
        GetEnvironmentVariableW(L"no_proxy", text, CAPACITY);
        printf("no_proxy");
    } else {
        wchar_t address[100];
        swprintf(address, 100, L"%hs", name);
        printf("proxy %u", UseWindowsProxy(address, text, CAPACITY));
    }
}

int main(int count, char** arguments)
{
    for (int i = 1; i < count; ++i) {
        text[0] = L'\0';
        Do(arguments[i]);
        printf(": %ls\n", text);
    }
    return 0;
}
