// Base of the exceptions that carry a system status code.
#pragma once

#include <cstdint>
#include <exception>
#include <string>

namespace OS {

// A result code that travels with whatever reports it: a Windows error, an HRESULT or a module's own code.
class CReturnValueObj {
  public:
    explicit CReturnValueObj(uint32_t code) noexcept : m_code(code) {}
    virtual ~CReturnValueObj() = default;

    uint32_t GetCode() const noexcept { return m_code; }

  protected:
    CReturnValueObj(const CReturnValueObj&) = default;
    CReturnValueObj& operator=(const CReturnValueObj&) = default;

  private:
    uint32_t m_code;
};

// Also a std::exception, so that a host that knows nothing of this library can still catch and print it.
class CException : public CReturnValueObj, public std::exception {
  public:
    CException(uint32_t code, std::string text) : CReturnValueObj(code), m_text(std::move(text)) {}

    const char* what() const noexcept override { return m_text.c_str(); }

  private:
    std::string m_text;
};

// Throws a CException for an HRESULT; `what` names the call or the missing object.
[[noreturn]] void ThrowHResult(int32_t status, const char* what);

}  // namespace OS
