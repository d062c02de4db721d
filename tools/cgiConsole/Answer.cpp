#include "Answer.h"

namespace wrb {
namespace {

// Everything that a page loads is the console's own; nothing is written into the page itself.
constexpr char kEveryAnswer[] =
    "X-Content-Type-Options: nosniff\r\n"
    "Referrer-Policy: same-origin\r\n"
    "Content-Security-Policy: default-src 'none'; style-src 'self'; script-src 'self'; connect-src 'self'; "
    "form-action 'self'; frame-ancestors 'none'; base-uri 'none'\r\n";

}  // namespace

void PutAnswer(CPutStream& out, const Answer& answer) {
    out << "Status: " << answer.status.c_str() << "\r\n" << kEveryAnswer;
    for (const std::string& line : answer.headers) {
        out << line.c_str() << "\r\n";
    }
    out << "\r\n";
    out.Send(reinterpret_cast<const unsigned char*>(answer.body.data()), static_cast<int>(answer.body.size()));
    out << flush;
}

Answer RedirectTo(const std::string& address) {
    return {.status = "303 See Other", .headers = {"Location: " + address, "Cache-Control: no-store"}};
}

}  // namespace wrb
