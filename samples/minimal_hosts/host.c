/* A host in C: both calls, guarded. Any compiler for 64-bit Windows will do. */
#include <product_services/guarded_calls.h>

#include <stdio.h>

static wchar_t text[0x10000];

static void Print(const char* name, uint32_t outcome, const GuardedCall* call)
{
    if (outcome == PRODUCT_SERVICES_REPORTED) {
        printf("%s: %u: %ls\n", name, (unsigned)call->resultCode, text);
    } else if (outcome == PRODUCT_SERVICES_NOTHING_REPORTED) {
        printf("%s: nothing was reported\n", name);
    } else {
        printf("%s: error: %ls\n", name, text);
    }
}

int main(void)
{
    GuardedCall call = {0};
    call.size = sizeof call;
    call.productName = L"Example Draft";
    call.productVersion = L"2026.1";
    call.apiKey = L"draft20-7k2m9q-x4v8p1w";
    call.languageId = 120;
    call.text = text;
    call.textCapacity = sizeof text / sizeof text[0];

    Print("CheckForUpdates", GuardedCheckForUpdates(&call), &call);
    Print("Upgrade", GuardedUpgrade(&call), &call);
    return 0;
}
