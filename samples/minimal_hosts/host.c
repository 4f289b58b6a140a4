/* A host in C: both calls, guarded. Any compiler for 64-bit Windows will do. */
#include <product_services/guarded_calls.h>

#include <stdio.h>

static wchar_t text[0x10000];

static void Print(const char* name, uint32_t outcome, const GuardedCall* call)
{
    switch (outcome) {
    case PRODUCT_SERVICES_NOTHING_REPORTED:
        printf("%s: nothing was reported\n", name);
        break;
    case PRODUCT_SERVICES_REPORTED: /* with 200 a trusted address to download from */
        printf("%s: %u: %ls\n", name, (unsigned)call->resultCode, text);
        break;
    case PRODUCT_SERVICES_UNTRUSTED_ADDRESS:
        printf("%s: not to be opened: %ls\n", name, text);
        break;
    case PRODUCT_SERVICES_MESSAGE_WITHHELD:
        printf("%s: not shown, since the check is quiet: %ls\n", name, text);
        break;
    default:
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
    call.trustedHosts = L"localhost:18443";

    Print("CheckForUpdates", GuardedCheckForUpdates(&call), &call);
    Print("Upgrade", GuardedUpgrade(&call), &call);
    return 0;
}
