#pragma once

#include <afxwin.h>

#include "host/host_environment.h"
#include "platform/product_record.h"
#include "product_services/product_services.h"

#include <string>

namespace product_services {

/// The frame of an exported call, on its stack: while it lives, dialogs and pictures come from this library
/// and not from the host, whatever way the call ends.
class HostCallScope
{
public:
    /// Makes the structure and the environment the current ones, and chooses the texts and the stored product
    /// record.
    explicit HostCallScope(HostContext* context, CallEnvironment& environment = DefaultEnvironment);
    ~HostCallScope();

    HostCallScope(const HostCallScope&) = delete;
    HostCallScope& operator=(const HostCallScope&) = delete;

    /// Reads the stored record anew. Where it is absent, reports 950 after 750 ms and returns false.
    bool RequireRecord();

    const ProductRecord& Record() const { return *m_record; }

private:
    AFX_MAINTAIN_STATE2 m_moduleState;
    ProductRecord* m_record;
};

/// The record of this process. The first call chooses its product; later calls get the same record, whatever
/// product they name. Owned by the library.
ProductRecord& SelectProductRecord(const std::wstring& productName, const std::wstring& productVersion);

/// Reads the record anew, up to five times with a pause of 150 ms after every failed attempt; false where all
/// have failed.
bool LoadProductRecord(ProductRecord& record);

} // namespace product_services
