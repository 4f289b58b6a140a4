/* Checks for updates in the language whose id is the argument, to show the message boxes of the library. */
#include <product_services/guarded_calls.h>

#include <stdlib.h>

int main(int argc, char** argv)
{
    GuardedCallParams params = {0};
    params.size = sizeof params;
    params.languageId = argc > 1 ? atoi(argv[1]) : 0;
    params.productName = L"Example Draft";
    params.productVersion = L"2026.2";
    params.apiKey = L"draft20-7k2m9q-x4v8p1w";
    switch (GuardedCheckForUpdates(&params)) {
    case PRODUCT_SERVICES_OUTCOME_UP_TO_DATE:
    case PRODUCT_SERVICES_OUTCOME_UNREACHABLE:
        return 0;
    default:
        return 1;
    }
}
