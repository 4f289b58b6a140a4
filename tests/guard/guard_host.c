/* A host in C. Each argument is what it does, or the address whose proxy it asks for; it prints a line for
 * each. */
#include "product_services/guarded_calls.h"

#include <stdio.h>
#include <string.h>
#include <wchar.h>
#include <windows.h>

#define CAPACITY 1000
static wchar_t text[CAPACITY];

static GuardedCall call = {
    .size = sizeof(GuardedCall),
    .languageId = PRODUCT_SERVICES_LANGUAGE_EN,
    .productName = L"Guarded",
    .productVersion = L"1",
    .apiKey = L"api-key",
    .text = text,
    .textCapacity = CAPACITY};

/* What the call returned, and the code where the library was asked. */
static void Do(const char* name)
{
    if (strcmp(name, "upgrade") == 0) {
        const uint32_t outcome = GuardedUpgrade(&call);
        printf("upgrade %u %d", outcome, (int)call.resultCode);
    } else if (strcmp(name, "crash") == 0) {
        *(volatile int*)NULL = 0;
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
