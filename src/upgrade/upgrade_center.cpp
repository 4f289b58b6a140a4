#include <afxwin.h>

#include "upgrade/upgrade_center.h"

#include "host/current_call.h"
#include "host/report_result.h"
#include "upgrade/product_upgrade.h"

namespace product_services {

void RunUpgradeCenter(const ProductRecord& record, bool isServiceReachable)
{
    if (!isServiceReachable) {
        ReportResult(PRODUCT_SERVICES_NO_CONNECTION);
        return;
    }
    ProductUpgrade dialog(HostText(CurrentHostContext->productName), record);
    dialog.DoModal();
}

} // namespace product_services
