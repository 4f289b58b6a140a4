#pragma once

#include <afxwin.h>

#include "platform/product_record.h"
#include "product_services/product_services.h"

namespace product_services {

/// The frame of an exported call, on its stack: while it lives, dialogs and pictures come from this library
/// and not from the host, whatever way the call ends.
class HostCallScope
{
public:
    /// Takes the host's record for the current one and chooses the texts and the stored product record.
    explicit HostCallScope(HostContext* context);

    HostCallScope(const HostCallScope&) = delete;
    HostCallScope& operator=(const HostCallScope&) = delete;

    /// Reads the stored record anew. Where it is absent, reports 950 after 750 ms and returns false.
    bool RequireRecord();

    const ProductRecord& Record() const { return m_record; }

private:
    static ProductRecord& BeginCall(HostContext* context);

    AFX_MAINTAIN_STATE2 m_moduleState{AfxGetStaticModuleState()};
    ProductRecord& m_record;
};

} // namespace product_services
