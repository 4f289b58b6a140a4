/* A host in C: both calls, guarded. Any compiler for 64-bit Windows will do, with ProductServicesGuard.dll
 * in the folder of the program. */
#include <product_services/guarded_calls.h>

#include <fcntl.h>
#include <io.h>
#include <stdio.h>
#include <windows.h>

typedef struct Call
{
    GuardedCallParams params;
    ProductServicesOutcome outcome;
    wchar_t text[0x1000];
} Call;

static volatile uint32_t isEnding;

static void Prepare(Call* call, uint32_t options)
{
    call->params = (GuardedCallParams){0};
    call->params.size = sizeof call->params;
    call->params.languageId = PRODUCT_SERVICES_LANGUAGE_EN;
    call->params.productName = L"Example Draft";
    call->params.productVersion = L"2026.1";
    call->params.apiKey = L"draft20-7k2m9q-x4v8p1w";
    call->params.trustedHosts = L"localhost:18443";
    call->params.options = options | PRODUCT_SERVICES_OPTION_SYSTEM_PROXY;
    call->params.timeLimitMs = 15000;
    call->params.cancelFlag = &isEnding;
    call->params.resultText = call->text;
    call->params.resultTextCapacity = sizeof call->text / sizeof call->text[0];
}

static DWORD WINAPI CheckQuietly(void* parameter)
{
    Call* check = parameter;
    check->outcome = GuardedCheckForUpdates(&check->params);
    return 0;
}

static void Print(const wchar_t* name, const Call* call)
{
    switch (call->outcome) {
    case PRODUCT_SERVICES_OUTCOME_NEWER_RELEASE:
        /* The URL is https and on a trusted host, so it may be opened. */
        wprintf(L"%ls: a newer release is at %ls\n", name, call->text);
        break;
    case PRODUCT_SERVICES_OUTCOME_UP_TO_DATE:
        wprintf(L"%ls: up to date\n", name);
        break;
    case PRODUCT_SERVICES_OUTCOME_BROWSER_OPENED:
        wprintf(L"%ls: the browser shows the purchase page\n", name);
        break;
    case PRODUCT_SERVICES_OUTCOME_USER_QUIT:
        wprintf(L"%ls: left by the user\n", name);
        break;
    case PRODUCT_SERVICES_OUTCOME_UNTRUSTED_CERTIFICATE:
    case PRODUCT_SERVICES_OUTCOME_UNTRUSTED_ADDRESS:
        wprintf(L"%ls: not secure, ask your administrator: %ls\n", name, call->text);
        break;
    case PRODUCT_SERVICES_OUTCOME_UNREACHABLE:
    case PRODUCT_SERVICES_OUTCOME_TIMED_OUT:
        wprintf(L"%ls: no connection, try again later: %ls\n", name, call->text);
        break;
    case PRODUCT_SERVICES_OUTCOME_CANCELLED:
        wprintf(L"%ls: cancelled\n", name);
        break;
    default:
        wprintf(L"%ls: failed with outcome %u: %ls\n", name, (unsigned)call->outcome, call->text);
    }
}

int main(void)
{
    static Call check, upgrade;
    _setmode(_fileno(stdout), _O_U8TEXT); /* for texts in any language */

    Prepare(&check, PRODUCT_SERVICES_OPTION_QUIET);
    HANDLE worker = CreateThread(NULL, 0, CheckQuietly, &check, 0, NULL);
    /* The host's window is open here. When it is closed, isEnding = 1 ends a check that is still running. */
    if (worker != NULL) {
        WaitForSingleObject(worker, INFINITE);
        CloseHandle(worker);
        Print(L"CheckForUpdates", &check);
    }

    Prepare(&upgrade, 0);
    upgrade.outcome = GuardedUpgrade(&upgrade.params); /* on the thread that shows the host's windows */
    Print(L"Upgrade", &upgrade);
    return 0;
}
