#include <afx.h>

CRuntimeClass CObject::classCObject{"CObject", static_cast<int>(sizeof(CObject)), nullptr};

CRuntimeClass* CObject::GetRuntimeClass() const
{
    return RUNTIME_CLASS(CObject);
}

BOOL CObject::IsKindOf(const CRuntimeClass* pClass) const
{
    return GetRuntimeClass()->IsDerivedFrom(pClass);
}

BOOL CRuntimeClass::IsDerivedFrom(const CRuntimeClass* pBaseClass) const
{
    for (const CRuntimeClass* candidate = this; candidate; candidate = candidate->m_pBaseClass) {
        if (candidate == pBaseClass) {
            return TRUE;
        }
    }
    return FALSE;
}
