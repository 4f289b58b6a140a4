/* A host in C that makes guarded calls: guard_host WORD... Each word sets something for the calls that follow
 * it, or makes a call. For each call it prints a line with the outcome, the result code and the text. If a
 * time limit is set, another line gives the duration in seconds, rounded down. */
#include "product_services/guarded_calls.h"

#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <wchar.h>
#include <windows.h>

#include <wincrypt.h>

#define CAPACITY 1000
static wchar_t text[CAPACITY];

static GuardedCallParams params = {
    .size = sizeof(GuardedCallParams),
    .languageId = PRODUCT_SERVICES_LANGUAGE_EN,
    .productName = L"Guarded",
    .productVersion = L"1",
    .apiKey = L"api-key",
    .resultText = text,
    .resultTextCapacity = CAPACITY};

static void PrintOutcome(const char* name, ProductServicesOutcome outcome, ULONGLONG start)
{
    const unsigned seconds = (unsigned)((GetTickCount64() - start) / 1000);
    printf("%s %u %d: %ls\n", name, (unsigned)outcome, (int)params.resultCode, text);
    if (params.timeLimitMs != 0) {
        printf("after %u s\n", seconds);
    }
    fflush(stdout);
}

/* Makes Windows fetch a list of revoked certificates, which it then keeps in its cache. */
static void FetchCrl(const char* url)
{
    void* crl = NULL;
    const BOOL isFetched =
        CryptRetrieveObjectByUrlA(url, CONTEXT_OID_CRL, 0, 0, &crl, NULL, NULL, NULL, NULL);
    puts(isFetched ? "fetched" : "not fetched");
    fflush(stdout);
    if (isFetched) {
        CertFreeCRLContext(crl);
    }
}

/* Writes a value of the product's record, which each call reads again. */
static void StoreValue(const char* name, const char* value)
{
    const LSTATUS status = RegSetKeyValueA(
        HKEY_CURRENT_USER, "Software\\Example Maker\\Products\\Guarded\\1", name, REG_SZ, value,
        (DWORD)strlen(value) + 1);
    if (status != ERROR_SUCCESS) {
        printf("not stored: %ld\n", status);
    }
}

static void RunWord(const char* word)
{
    const ULONGLONG start = GetTickCount64();
    if (strcmp(word, "check") == 0) {
        params.options |= PRODUCT_SERVICES_OPTION_QUIET;
        PrintOutcome(word, GuardedCheckForUpdates(&params), start);
    } else if (strcmp(word, "upgrade") == 0) {
        params.options &= ~(uint32_t)PRODUCT_SERVICES_OPTION_QUIET;
        PrintOutcome(word, GuardedUpgrade(&params), start);
    } else if (strcmp(word, "any-certificate") == 0) {
        params.options |= PRODUCT_SERVICES_OPTION_ANY_CERTIFICATE;
    } else if (strcmp(word, "system-proxy") == 0) {
        params.options |= PRODUCT_SERVICES_OPTION_SYSTEM_PROXY;
    } else if (strncmp(word, "limit=", 6) == 0) {
        params.timeLimitMs = (uint32_t)atoi(word + 6);
    } else if (strncmp(word, "key=", 4) == 0) {
        StoreValue("key", word + 4);
    } else if (strncmp(word, "version=", 8) == 0) {
        StoreValue("version", word + 8);
    } else if (strcmp(word, "environment") == 0) {
        const DWORD length = GetEnvironmentVariableW(L"https_proxy", text, CAPACITY);
        printf("https_proxy: %ls\n", length ? text : L"not set");
        fflush(stdout);
    } else if (strncmp(word, "fetch=", 6) == 0) {
        FetchCrl(word + 6);
    } else if (strncmp(word, "choose=", 7) == 0) {
        /* chooses a command in the sample host's window, as a program that operates windows does */
        const HWND sampleHost = FindWindowW(NULL, L"Example Draft 2026.1 \x2013 sample host");
        const WPARAM command = (WPARAM)atoi(word + 7);
        const LRESULT isDone =
            SendMessageTimeoutW(sampleHost, WM_COMMAND, command, 0, SMTO_NORMAL, 5000, NULL);
        puts(isDone ? "done" : "waits");
    } else if (strcmp(word, "crash") == 0) {
        *(volatile int*)NULL = 0;
    } else {
        printf("unknown: %s\n", word);
    }
}

int main(int count, char** words)
{
    for (int i = 1; i < count; ++i) {
        RunWord(words[i]);
    }
    return 0;
}
