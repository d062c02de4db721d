#include "cgi_GetParameter.h"

#include <exception>
#include <new>

#include "Text.h"
#include "cgi_GetParameterImp.h"

CGetParameterImp* CGetParameter::s_pImp = nullptr;

CGetParameter::CGetParameter() : CGetParameter(false, false) {}

CGetParameter::CGetParameter(bool allowBinaryBlock, bool skipPercentDecoding) {
    if (s_pImp == nullptr) {
        try {
            // Never deleted: it serves every later object, up to the end of the process.
            s_pImp = new (std::nothrow) CGetParameterImp(allowBinaryBlock, skipPercentDecoding);
        } catch (const std::exception&) {  // no memory for its parts: no implementation
        }
    }
}

CGetParameter::~CGetParameter() = default;

int CGetParameter::GetInitializationResult() const {
    return s_pImp != nullptr ? s_pImp->GetInitializationResult() : kCgiNoImplementation;
}

int CGetParameter::Get(const wchar_t* name, int defaultValue) const {
    const wchar_t* const value = s_pImp != nullptr ? s_pImp->Find(name) : nullptr;
    return value != nullptr ? wrb::ParseInt32(value) : defaultValue;
}

const wchar_t* CGetParameter::Get(const wchar_t* name) const {
    return GetValueByName(name, L"");
}

const wchar_t* CGetParameter::GetValueByName(const wchar_t* name, const wchar_t* defaultText) const {
    const wchar_t* const value = s_pImp != nullptr ? s_pImp->Find(name) : nullptr;
    return value != nullptr ? value : defaultText;
}

const wchar_t* CGetParameter::GetUploadFile(const wchar_t* name) const {
    const wchar_t* const path = s_pImp != nullptr ? s_pImp->FindUpload(name) : nullptr;
    return path != nullptr ? path : L"";
}

bool CGetParameter::EnumPara(const wchar_t*& name, const wchar_t*& value, bool skipEmpty) {
    name = value = nullptr;
    return s_pImp != nullptr && s_pImp->EnumPara(name, value, skipEmpty);
}

void CGetParameter::ResetEnumPara() {
    if (s_pImp != nullptr) {
        s_pImp->ResetEnumPara();
    }
}

int CGetParameter::AddParameter(const wchar_t* name, const wchar_t* value) {
    try {
        if (s_pImp != nullptr) {
            s_pImp->AddParameter(name, value);
            return 0;
        }
    } catch (const std::exception&) {  // an exported function lets nothing through
    }
    return kCgiNoImplementation;
}

void CGetParameter::Reset() {
    if (s_pImp != nullptr) {
        s_pImp->Reset();
    }
}

const char* CGetParameter::Dump() const {
    try {
        return s_pImp != nullptr ? s_pImp->Dump() : "";
    } catch (const std::exception&) {  // an exported function lets nothing through
        return "";
    }
}

bool CGetParameter::DeleteUnwantedUploadFile(const wchar_t* name) {
    try {
        return s_pImp != nullptr && s_pImp->DeleteUnwantedUploadFile(name);
    } catch (const std::exception&) {  // an exported function lets nothing through
        return false;
    }
}

void CGetParameter::DeleteUploadFiles() {
    if (s_pImp != nullptr) {
        s_pImp->DeleteUploadFiles();
    }
}
