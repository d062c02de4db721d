#include "cgi_GetParameter.h"

#include <exception>
#include <functional>
#include <new>

#include "Text.h"
#include "cgi_GetParameterImp.h"

namespace {

// What the implementation answers; `otherwise` without one and when memory is exhausted: an exported function throws
// nothing.
template <typename Result, typename Method, typename... Arguments>
Result Ask(CGetParameterImp* imp, Result otherwise, Method method, Arguments&&... arguments) noexcept {
    try {
        return imp != nullptr ? std::invoke(method, imp, arguments...) : otherwise;
    } catch (const std::exception&) {
        return otherwise;
    }
}

}  // namespace

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
    return Ask(s_pImp, kCgiNoImplementation, &CGetParameterImp::GetInitializationResult);
}

int CGetParameter::Get(const wchar_t* name, int defaultValue) const {
    const wchar_t* const value = GetValueByName(name, nullptr);
    return value != nullptr ? wrb::ParseInt32(value) : defaultValue;
}

const wchar_t* CGetParameter::Get(const wchar_t* name) const {
    return GetValueByName(name, L"");
}

const wchar_t* CGetParameter::GetValueByName(const wchar_t* name, const wchar_t* defaultText) const {
    return Ask(s_pImp, defaultText, &CGetParameterImp::Find, name, defaultText);
}

const wchar_t* CGetParameter::GetUploadFile(const wchar_t* name) const {
    return Ask(s_pImp, L"", &CGetParameterImp::FindUpload, name);
}

bool CGetParameter::EnumPara(const wchar_t*& name, const wchar_t*& value, bool skipEmpty) {
    name = value = nullptr;
    return Ask(s_pImp, false, &CGetParameterImp::EnumPara, name, value, skipEmpty);
}

void CGetParameter::ResetEnumPara() {
    if (s_pImp != nullptr) {
        s_pImp->ResetEnumPara();
    }
}

int CGetParameter::AddParameter(const wchar_t* name, const wchar_t* value) {
    return Ask(s_pImp, int{kCgiNoImplementation}, &CGetParameterImp::AddParameter, name, value);
}

void CGetParameter::Reset() {
    if (s_pImp != nullptr) {
        s_pImp->Reset();
    }
}

const char* CGetParameter::Dump() const {
    return Ask(s_pImp, "", &CGetParameterImp::Dump);
}

bool CGetParameter::DeleteUnwantedUploadFile(const wchar_t* name) {
    return Ask(s_pImp, false, &CGetParameterImp::DeleteUnwantedUploadFile, name);
}

void CGetParameter::DeleteUploadFiles() {
    if (s_pImp != nullptr) {
        s_pImp->DeleteUploadFiles();
    }
}
