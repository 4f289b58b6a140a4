#include <afxwin.h>

CRuntimeClass CObject::classCObject{"CObject", static_cast<int>(sizeof(CObject)), nullptr};

CRuntimeClass* CObject::GetRuntimeClass() const
{
    return RUNTIME_CLASS(CObject);
}

IMPLEMENT_DYNAMIC(CCmdTarget, CObject)

const AFX_MSGMAP* CCmdTarget::GetThisMessageMap()
{
    static constexpr AFX_MSGMAP_ENTRY entries[]{{0, 0, 0, nullptr}};
    static constexpr AFX_MSGMAP map{nullptr, entries};
    return &map;
}

const AFX_MSGMAP* CCmdTarget::GetMessageMap() const
{
    return GetThisMessageMap();
}

bool CCmdTarget::RouteMessage(UINT message, UINT code, UINT id, const AFX_MESSAGE& arguments)
{
    for (const AFX_MSGMAP* map = GetMessageMap(); map; map = map->baseMap ? map->baseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* entry = map->entries; entry->nMessage; ++entry) {
            if (entry->nMessage == message && entry->nCode == code && entry->nID == id) {
                entry->invoke(*this, arguments);
                return true;
            }
        }
    }
    return false;
}
