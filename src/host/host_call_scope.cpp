#include "host/host_call_scope.h"

#include "host/current_call.h"
#include "host/report_result.h"
#include "text/language_code.h"
#include "text/text_table.h"

#include <optional>

namespace product_services {
namespace {

constexpr int LoadAttempts = 5;
constexpr DWORD PauseAfterFailureMs = 150;

std::optional<ProductRecord> processRecord;

} // namespace

HostCallScope::HostCallScope(HostContext* context, CallEnvironment& environment)
    : m_moduleState(AfxGetStaticModuleState())
{
    CurrentHostContext = context;
    CurrentEnvironment = &environment;
    const std::wstring languageCode = LanguageCodeFromId(context->languageId);
    CurrentTextTable = &GetTextTable(languageCode);
    m_record = &SelectProductRecord(TextOrEmpty(context->productName), TextOrEmpty(context->productVersion));
}

HostCallScope::~HostCallScope()
{
    CurrentEnvironment = &DefaultEnvironment;
}

bool HostCallScope::RequireRecord()
{
    if (LoadProductRecord(*m_record)) {
        return true;
    }
    ReportResult(PRODUCT_SERVICES_NO_PRODUCT_RECORD);
    return false;
}

ProductRecord& SelectProductRecord(const std::wstring& productName, const std::wstring& productVersion)
{
    // Deliberate: the first caller's product stays for the life of the process, even if it has no record.
    if (!processRecord) {
        processRecord.emplace(FindProductRecord(productName, productVersion));
    }
    return *processRecord;
}

bool LoadProductRecord(ProductRecord& record)
{
    for (int attempt = 0; attempt < LoadAttempts; ++attempt) {
        if (record.Load()) {
            return true;
        }
        // Deliberate: it also sleeps after the last failure, so a missing record costs 750 ms.
        Sleep(PauseAfterFailureMs);
    }
    return false;
}

} // namespace product_services
