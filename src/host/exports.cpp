#include "host/host_call_scope.h"

#include "update/update_check.h"
#include "upgrade/upgrade_center.h"

using namespace product_services;

// The two exports. Exceptions deliberately propagate to the host; HostCallScope still restores the module
// state.

void CheckForUpdates(HostContext* context)
{
    if (context) {
        HostCallScope call(context);
        RunUpdateCheck(call);
    }
}

void Upgrade(HostContext* context)
{
    if (context) {
        HostCallScope call(context);
        RunUpgradeCenter(call);
    }
}
