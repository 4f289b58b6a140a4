#include "host/host_call_scope.h"

#include "upgrade/upgrade_center.h"

#include "host/current_call.h"
#include "host/report_result.h"
#include "service/service_client.h"
#include "upgrade/product_upgrade_dialog.h"

namespace product_services {

void RunUpgradeCenter(HostCallScope& call)
{
    // Deliberate: the probe runs before the record is looked for.
    const bool isReachable = ServiceClient::IsServiceReachable();
    if (!call.RequireRecord()) {
        return;
    }
    if (!isReachable) {
        ReportResult(PRODUCT_SERVICES_NO_CONNECTION);
        return;
    }
    ProductUpgrade dialog(TextOrEmpty(CurrentHostContext->productName), call.Record());
    dialog.DoModal();
}

} // namespace product_services
