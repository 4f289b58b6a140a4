/* A stub for ProductServicesGuard.dll, which the samples in other languages call on Linux. It checks that a
 * sample fills in the structure as the header declares it, and returns the outcome in the environment
 * variable STUB_OUTCOME.
 *
 * Character is the type of a character in the sample: uint16_t as on Windows, or uint32_t for Python's ctypes
 * on Linux. */
#include <product_services/guarded_calls.h>

#include <stdbool.h>
#include <stdlib.h>

static const wchar_t ResultText[] = L"\x4E00 text";

static bool IsEqual(const void* text, const wchar_t* expected)
{
    const Character* actual = text;
    while (*actual != 0 && *actual == *expected) {
        ++actual;
        ++expected;
    }
    return *actual == *expected;
}

static bool IsAsExpected(const GuardedCallParams* params, uint32_t options)
{
    return params->size == sizeof(GuardedCallParams) && params->languageId == PRODUCT_SERVICES_LANGUAGE_EN &&
           IsEqual(params->productName, L"Example Draft") && IsEqual(params->productVersion, L"2026.1") &&
           IsEqual(params->apiKey, L"draft20-7k2m9q-x4v8p1w") &&
           IsEqual(params->trustedHosts, L"localhost:18443") &&
           params->options == (options | PRODUCT_SERVICES_OPTION_SYSTEM_PROXY) &&
           params->timeLimitMs == 15000 && *params->cancelFlag == 0 && IsEqual(params->resultText, L"") &&
           params->resultTextCapacity == 4096 && params->resultCode == 0 && params->isTextTruncated == 0 &&
           params->reserved == 0;
}

static ProductServicesOutcome Answer(GuardedCallParams* params, uint32_t options)
{
    if (!IsAsExpected(params, options)) {
        exit(9);
    }
    Character* text = (void*)params->resultText;
    for (size_t i = 0; i < sizeof ResultText / sizeof ResultText[0]; ++i) {
        text[i] = ResultText[i];
    }
    return (ProductServicesOutcome)atoi(getenv("STUB_OUTCOME"));
}

ProductServicesOutcome GuardedCheckForUpdates(GuardedCallParams* params)
{
    return Answer(params, PRODUCT_SERVICES_OPTION_QUIET);
}

ProductServicesOutcome GuardedUpgrade(GuardedCallParams* params)
{
    return Answer(params, 0);
}

/* Python looks this function up, too, although the sample does not call it. */
ProductServicesPublisherResult VerifyPublisher(
    const wchar_t* path, const wchar_t* publishers, wchar_t* text, uint32_t textCapacity)
{
    (void)path;
    (void)publishers;
    (void)text;
    (void)textCapacity;
    return PRODUCT_SERVICES_PUBLISHER_NOT_SIGNED;
}
