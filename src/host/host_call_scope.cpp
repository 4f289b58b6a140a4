#include "host/host_call_scope.h"

#include "host/current_call.h"
#include "host/installed_product.h"
#include "host/report_result.h"
#include "text/language_code.h"
#include "text/text_table.h"

namespace product_services {

HostCallScope::HostCallScope(HostContext* context) : m_record(BeginCall(context)) {}

ProductRecord& HostCallScope::BeginCall(HostContext* context)
{
    CurrentHostContext = context;
    CurrentTextTable = &GetTextTable(LanguageCodeFromId(context->languageId));
    return SelectProductRecord(HostText(context->productName), HostText(context->productVersion));
}

bool HostCallScope::RequireRecord()
{
    if (LoadProductRecord(m_record)) {
        return true;
    }
    ReportResult(PRODUCT_SERVICES_NO_PRODUCT_RECORD);
    return false;
}

} // namespace product_services
