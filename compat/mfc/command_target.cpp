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

bool CCmdTarget::HandleMessage(UINT message, UINT code, UINT id, const MessageArguments& arguments)
{
    for (const AFX_MSGMAP* map = GetMessageMap(); map;
         map = map->pfnGetBaseMap ? map->pfnGetBaseMap() : nullptr) {
        for (const AFX_MSGMAP_ENTRY* entry = map->lpEntries; entry->nMessage; ++entry) {
            if (entry->nMessage == message && entry->nCode == code && entry->nID == id) {
                entry->pfn(*this, arguments);
                return true;
            }
        }
    }
    return false;
}
