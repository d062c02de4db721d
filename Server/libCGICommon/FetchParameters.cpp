// The part of CGetParameterImp that reads the request.
#include <algorithm>
#include <new>

#include "AsciiCase.h"
#include "DebugLog.h"
#include "MultipartForm.h"
#include "QueryTokens.h"
#include "Text.h"
#include "cgi_GetParameterImp.h"

namespace {

constexpr const wchar_t* kFormReader = L"CGetCGINameValuePair::CGetCGINameValuePair";
constexpr const wchar_t* kMultipartReader = L"CGetParameterImp::FetchMultipart";
constexpr std::string_view kMultipartType = "multipart/form-data";
constexpr std::string_view kFormType = "application/x-www-form-urlencoded";
constexpr std::string_view kBinaryBlockToken = "BinaryDataBlock=";

}  // namespace

CGetParameterImp::CGetParameterImp(bool allowBinaryBlock, bool skipPercentDecoding, wrb::IGateway& gateway)
    : m_gateway(gateway),
      m_folder(gateway.HomeFolder()),
      m_allowBinaryBlock(allowBinaryBlock),
      m_skipPercentDecoding(skipPercentDecoding),
      m_status(FetchParameters()) {}

CgiStatus CGetParameterImp::FetchParameters() {
    const std::string method = m_gateway.Variable(L"REQUEST_METHOD").value_or("");
    if (method == "GET") {
        std::string query = m_gateway.Variable(L"QUERY_STRING").value_or("");
        AddTokens(query.data(), query.size(), false);
        return kCgiFetched;
    }
    return method == "POST" ? FetchPost() : kCgiBadMethod;
}

CgiStatus CGetParameterImp::FetchPost() {
    const std::optional<std::string> contentType = m_gateway.Variable(L"CONTENT_TYPE");
    if (contentType && wrb::StartsIgnoringCase(*contentType, kMultipartType)) {
        const CgiStatus status = FetchMultipart(*contentType);
        if (status != kCgiFetched) {
            Reset();
            DeleteUploadFiles();
            WRB_LOG(kLogError, L"%s - the request is refused with status [%d].", kMultipartReader,
                    static_cast<int>(status));
        }
        return status;
    }
    if (contentType && !wrb::StartsIgnoringCase(*contentType, kFormType)) {
        WRB_LOG(kLogDebug, L"%s - env CONTENT_TYPE with _HTML_CONTENT_TYPE_FORM", L"CGetParameterImp::FetchParameters");
        return kCgiBadContentType;
    }
    FetchForm();
    return kCgiFetched;
}

void CGetParameterImp::FetchForm() {
    const wrb::RequestBody body = wrb::ReadRequestBody(m_gateway, kFormReader);
    if (body.bytes == nullptr) {
        return;
    }
    AddTokens(body.bytes.get(), body.size, m_allowBinaryBlock);
    WRB_LOG(kLogDebug, L"%s - <<<", kFormReader);
}

void CGetParameterImp::AddTokens(char* text, std::size_t size, bool mayHaveBinaryBlock) try {
    const std::vector<std::string_view> tokens = wrb::SplitQuery(text, size);
    for (const std::string_view& token : tokens) {
        if (mayHaveBinaryBlock && &token == &tokens.back() && token == kBinaryBlockToken) {
            const std::string_view data(token.data() + token.size(), text + size);
            AddBinaryBlock(data.substr(std::min<std::size_t>(data.size(), 1)));
        } else if (const auto [name, value] = wrb::SplitToken(token); !name.empty()) {
            Add(wrb::PercentDecode(name), wrb::PercentDecode(value));
        }
    }
} catch (const std::bad_alloc&) {
    Reset();
    DeleteUploadFiles();
    WRB_LOG(kLogDebug, L"%s - malloc failed.", kFormReader);
}

// The path of the new file; empty when it could not be stored.
std::wstring CGetParameterImp::StoreUpload(std::string_view bytes, const wchar_t* function) {
    m_uploads.emplace_back();  // before the file exists, so that lack of memory loses none
    std::wstring path = m_uploads.back() = m_folder.Store(bytes, function);
    if (path.empty()) {
        m_uploads.pop_back();
    }
    return path;
}

void CGetParameterImp::AddBinaryBlock(std::string_view data) {
    std::wstring path = StoreUpload(data, kFormReader);
    WRB_LOG(kLogDebug, L"%s - write Length = %d", kFormReader, static_cast<int32_t>(data.size()));
    if (data.empty() && !path.empty()) {
        wrb::DeleteUpload(path, kFormReader);
        m_uploads.pop_back();
        path.clear();
    }
    Add(wrb::Utf8ToWide(kBinaryBlockToken.substr(0, kBinaryBlockToken.size() - 1)), std::move(path));
}

CgiStatus CGetParameterImp::FetchMultipart(std::string_view contentType) try {
    const std::string boundary = wrb::MultipartBoundary(contentType);
    if (boundary.empty()) {
        return kCgiMultipartNoBoundary;
    }
    const wrb::RequestBody body = wrb::ReadRequestBody(m_gateway, kMultipartReader);
    return body.status == kCgiFetched ? StoreMultipart(body, boundary) : body.status;
} catch (const std::bad_alloc&) {
    return kCgiMultipartNoMemory;
}

// The whole body is parsed before the first file is written.
CgiStatus CGetParameterImp::StoreMultipart(const wrb::RequestBody& body, std::string_view boundary) {
    std::vector<wrb::MultipartPart> parts;
    if (const CgiStatus status = wrb::ParseMultipart({body.bytes.get(), body.size}, boundary, parts);
        status != kCgiFetched) {
        return status;
    }
    for (const wrb::MultipartPart& part : parts) {
        std::wstring name = wrb::Utf8ToWide(part.name);
        if (!part.fileName) {
            Add(std::move(name), wrb::Utf8ToWide(part.content));
        } else if (!StoreFile(name, *part.fileName, part.content)) {
            return kCgiMultipartFileNotStored;
        }
    }
    return kCgiFetched;
}

bool CGetParameterImp::StoreFile(std::wstring_view name, std::string_view fileName, std::string_view content) {
    std::wstring path;
    if (!fileName.empty() || !content.empty()) {
        path = StoreUpload(content, kMultipartReader);
        if (path.empty()) {
            return false;
        }
    }
    Add(std::wstring(name), std::move(path));
    Add(std::wstring(name) + L".filename", wrb::LastComponent(wrb::Utf8ToWide(fileName)));
    return true;
}
