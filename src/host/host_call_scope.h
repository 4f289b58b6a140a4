#pragma once

#include <afxwin.h>

#include "host/host_environment.h"
#include "platform/product_record.h"
#include "product_services/product_services.h"

#include <string>

namespace product_services {

/// The frame of a call, created on its stack. During its lifetime, MFC loads dialogs and pictures from this
/// library instead of from the host. The previous state is restored even if an exception is thrown.
class HostCallScope
{
public:
    /// Makes the structure and the environment the current ones, and selects the texts and the product
    /// record.
    explicit HostCallScope(HostContext* context, CallEnvironment& environment = DefaultEnvironment);
    ~HostCallScope();

    HostCallScope(const HostCallScope&) = delete;
    HostCallScope& operator=(const HostCallScope&) = delete;

    /// Reads the stored record again. If there is none, reports 950 after 750 ms and returns false.
    bool RequireRecord();

    const ProductRecord& Record() const { return *m_record; }

private:
    AFX_MAINTAIN_STATE2 m_moduleState;
    ProductRecord* m_record;
};

/// Returns the record of this process, which the library owns. The first call chooses the product; later
/// calls get the same record, whatever product they name.
ProductRecord& SelectProductRecord(const std::wstring& productName, const std::wstring& productVersion);

/// Reads the record again, in up to five attempts with a pause of 150 ms after each that fails. Returns false
/// if all have failed.
bool LoadProductRecord(ProductRecord& record);

} // namespace product_services
