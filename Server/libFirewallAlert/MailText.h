// The text of a mail as a server takes it (RFC 5322, RFC 2045, RFC 2047).
//
// Whatever the parts contain, none of them ends its header or makes another one: addresses are checked, all other text
// is encoded.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace wrb {

// The valid addresses of a list with ";" between them, without the blanks around them. Valid is printable ASCII without
// blanks and without characters that end an address in a header, with something on both sides of an "@".
std::vector<std::string> MailAddresses(std::wstring_view list);

struct Mail {
    std::string id;    // unique on this computer, letters, digits and "-"
    int64_t seconds;   // since 1970-01-01 00:00 UTC
    std::string from;  // from MailAddresses, as all of the next
    std::vector<std::string> to;
    std::wstring subject;
    std::wstring body;  // lines end in "\n"
};

// Lines end in CR LF and have at most 76 bytes, but for long addresses. All bytes are ASCII.
std::string MailText(const Mail& mail);

}  // namespace wrb
