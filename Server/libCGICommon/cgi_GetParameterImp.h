// CGetParameterImp: the implementation of CGetParameter. It reads the request when it is made and answers look-ups.
#pragma once

#include <deque>
#include <string>
#include <string_view>
#include <vector>

#include "Gateway.h"
#include "RequestBody.h"
#include "UploadFolder.h"
#include "cgi_GetParameter.h"

class CGetParameterImp {
  public:
    // `gateway` must outlive the object. Throws only for lack of memory, and not for what a request takes: one that is
    // too much for the memory has no parameters.
    CGetParameterImp(bool allowBinaryBlock, bool skipPercentDecoding, wrb::IGateway& gateway = wrb::SystemGateway());
    CGetParameterImp(const CGetParameterImp&) = delete;
    CGetParameterImp& operator=(const CGetParameterImp&) = delete;

    CgiStatus GetInitializationResult() const noexcept { return m_status; }

    const wchar_t* Find(const wchar_t* name, const wchar_t* defaultText = nullptr) const noexcept;
    const wchar_t* FindUpload(const wchar_t* name) const noexcept;  // empty when there is none
    bool EnumPara(const wchar_t*& name, const wchar_t*& value, bool skipEmpty) noexcept;
    void ResetEnumPara() noexcept { m_cursor = 0; }
    int AddParameter(const wchar_t* name, const wchar_t* value);  // 0
    void Reset() noexcept;
    const char* Dump();
    bool DeleteUnwantedUploadFile(const wchar_t* name) const;
    void DeleteUploadFiles() noexcept;

  private:
    CgiStatus FetchParameters();
    CgiStatus FetchPost();
    void FetchForm();
    CgiStatus FetchMultipart(std::string_view contentType);
    CgiStatus StoreMultipart(const wrb::RequestBody& body, std::string_view boundary);
    bool StoreFile(std::wstring_view name, std::string_view fileName, std::string_view content);
    void AddTokens(char* text, std::size_t size, bool mayHaveBinaryBlock);
    std::wstring StoreUpload(std::string_view bytes, const wchar_t* function);
    void AddBinaryBlock(std::string_view data);
    void Add(std::wstring name, std::wstring value);

    wrb::IGateway& m_gateway;
    wrb::UploadFolder m_folder;
    const bool m_allowBinaryBlock;
    [[maybe_unused]] const bool m_skipPercentDecoding;  // of raw uploads, which nothing here reads
    // Name, value, name, value: a deque, so that a text that was handed out stays where it is when one is appended.
    std::deque<std::wstring> m_texts;
    std::vector<std::wstring> m_uploads;  // the files of this request
    std::size_t m_cursor = 0;             // index of the next name
    std::string m_dump;
    CgiStatus m_status;
};
