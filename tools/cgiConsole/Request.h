// The request that this process serves: its parameters, and what the web server says about it.
#pragma once

#include <optional>
#include <string>

#include "cgi_GetParameter.h"

namespace wrb {

class Request {
  public:
    Request();
    ~Request();  // deletes the uploads
    Request(const Request&) = delete;
    Request& operator=(const Request&) = delete;

    int Status() const { return m_parameters.GetInitializationResult(); }  // a CgiStatus
    bool IsPost() const { return m_isPost; }
    const std::wstring& User() const { return m_user; }  // as the web server has authenticated it; empty: nobody

    // Parameters. A text that is absent is empty, a number 0.
    bool Has(const wchar_t* name) const { return m_parameters.GetValueByName(name, nullptr) != nullptr; }
    std::wstring Text(const wchar_t* name) const { return m_parameters.Get(name); }
    int Number(const wchar_t* name) const { return m_parameters.Get(name, 0); }
    const wchar_t* Find(const wchar_t* name) const { return m_parameters.GetValueByName(name, nullptr); }
    std::wstring UploadPath(const wchar_t* name) const { return m_parameters.GetUploadFile(name); }

    // Reads and drops a body that was refused unread. A web server may drop the answer of a program that ends while the
    // server still writes to it.
    void DropUnreadBody() const;

    // A cookie's value; empty when there is none.
    static std::wstring Cookie(const std::wstring& name);

  private:
    CGetParameter m_parameters;
    const bool m_isPost;
    const std::wstring m_user;
};

}  // namespace wrb
