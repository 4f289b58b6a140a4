// Run-time class information, as documented for MFC.
#pragma once

#include <windows.h>

#define AFXAPI __stdcall
#define afx_msg

struct CRuntimeClass
{
    LPCSTR m_lpszClassName;
    int m_nObjectSize;
    const CRuntimeClass* m_pBaseClass;
};

class CObject
{
public:
    virtual CRuntimeClass* GetRuntimeClass() const;
    virtual ~CObject() = default;

    CObject(const CObject&) = delete;
    CObject& operator=(const CObject&) = delete;

    static CRuntimeClass classCObject;

protected:
    CObject() = default;
};

// clang-format off
#define RUNTIME_CLASS(class_name) (&class_name::class##class_name)

#define DECLARE_DYNAMIC(class_name)                    \
public:                                                \
    static CRuntimeClass class##class_name;            \
    CRuntimeClass* GetRuntimeClass() const override;

#define IMPLEMENT_DYNAMIC(class_name, base_class_name)                                      \
    CRuntimeClass class_name::class##class_name{                                            \
        #class_name, static_cast<int>(sizeof(class_name)), RUNTIME_CLASS(base_class_name)}; \
    CRuntimeClass* class_name::GetRuntimeClass() const                                      \
    {                                                                                       \
        return RUNTIME_CLASS(class_name);                                                   \
    }
// clang-format on
