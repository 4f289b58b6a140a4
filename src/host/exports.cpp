#include "host/host_call_scope.h"

#include "service/service_client.h"
#include "update/update_check.h"
#include "upgrade/upgrade_center.h"

using namespace product_services;

// The two exports. Exceptions leave them on purpose; the frame puts the module state back on their way out.

void CheckForUpdates(HostContext* context)
{
    if (!context) {
        return;
    }
    HostCallScope call(context);
    if (call.RequireRecord()) {
        RunUpdateCheck(call.Record());
    }
}

void Upgrade(HostContext* context)
{
    if (!context) {
        return;
    }
    HostCallScope call(context);
    // Meant: the probe runs, and takes its time, before it is known whether there is a record.
    const bool isReachable = ServiceClient::IsServiceReachable();
    if (call.RequireRecord()) {
        RunUpgradeCenter(call.Record(), isReachable);
    }
}
