/* A host in C. It cannot catch the C++ exceptions with which the library answers a malformed reply. */
#include <product_services/product_services.h>

#include <stdio.h>

/* No call reports this: the code stays so where there was nothing to report. */
#define NOTHING_REPORTED 0xFFFFFFFF

static wchar_t text[0x10000];

int main(void)
{
    HostContext context = {0};
    context.productName = L"Example Draft";
    context.productVersion = L"2026.1";
    context.apiKey = L"draft20-7k2m9q-x4v8p1w";
    context.languageId = 120;
    context.resultCode = NOTHING_REPORTED;
    context.resultText = text;

    CheckForUpdates(&context);

    if (context.resultCode == NOTHING_REPORTED) {
        printf("nothing was reported\n");
    } else {
        printf("%u: %ls\n", (unsigned)context.resultCode, text);
    }
    return 0;
}
