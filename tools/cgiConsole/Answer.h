// An answer of the console as it goes to the web server.
#pragma once

#include <string>
#include <vector>

#include "cgi_PutStream.h"

namespace wrb {

struct Answer {
    std::string status = "200 OK";
    std::vector<std::string> headers{};  // lines without their end, besides those that every answer has
    std::string body{};
};

void PutAnswer(CPutStream& out, const Answer& answer);

// The answer that sends the browser to another page with GET.
Answer RedirectTo(const std::string& address);

}  // namespace wrb
