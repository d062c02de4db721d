#include "MailText.h"

#include <algorithm>
#include <chrono>
#include <cstdio>

#include "Text.h"

namespace wrb {
namespace {

constexpr std::size_t kLongestAddress = 254;
constexpr std::size_t kLineBytes = 76;
// Content of one encoded word: with its marks and the header's name it fits in a line.
constexpr std::size_t kWordBytes = 36;

bool IsGraphic(wchar_t character) {
    return character > L' ' && character < 0x7F;
}

std::wstring_view Trimmed(std::wstring_view text) {
    const std::size_t begin = std::min(text.find_first_not_of(L' '), text.size());
    return text.substr(begin, text.find_last_not_of(L' ') + 1 - begin);
}

bool IsAddress(std::wstring_view text) {
    const std::size_t at = text.rfind(L'@');
    return text.size() <= kLongestAddress && at != text.npos && at > 0 && at + 1 < text.size() &&
           text.find_first_of(L"<>()[]\\,;:\"") == text.npos && std::ranges::all_of(text, IsGraphic);
}

void AppendEscaped(std::string& out, char byte) {
    char text[4];
    std::snprintf(text, sizeof text, "=%02X", static_cast<unsigned>(static_cast<unsigned char>(byte)));
    out += text;
}

bool IsWordByte(char byte) {
    return (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') || (byte >= 'a' && byte <= 'z');
}

// One character of UTF-8 as an encoded word has it.
std::string EncodedCharacter(std::string_view bytes) {
    std::string out;
    for (const char byte : bytes) {
        IsWordByte(byte) ? out.append(1, byte) : byte == ' ' ? out.append(1, '_') : (AppendEscaped(out, byte), out);
    }
    return out;
}

std::size_t CharacterBytes(std::string_view utf8) {
    std::size_t count = 1;
    while (count < utf8.size() && (utf8[count] & 0xC0) == 0x80) {
        ++count;
    }
    return count;
}

// Always encoded, one word a line: a text that looks like an encoded word or contains a line end stays text.
std::string EncodedWords(std::string_view utf8) {
    std::string out = "=?UTF-8?Q?";
    std::size_t word = 0;
    while (!utf8.empty()) {
        const std::size_t count = CharacterBytes(utf8);
        const std::string character = EncodedCharacter(utf8.substr(0, count));
        utf8.remove_prefix(count);
        if (word + character.size() > kWordBytes) {
            out += "?=\r\n =?UTF-8?Q?";
            word = 0;
        }
        out += character;
        word += character.size();
    }
    return out + "?=";
}

std::string QuotedPrintable(std::string_view utf8) {
    std::string out;
    std::size_t column = 0;
    for (std::size_t i = 0; i < utf8.size(); ++i) {
        const char byte = utf8[i];
        if (byte == '\n') {
            out += "\r\n";
            column = 0;
            continue;
        }
        const bool endsLine = i + 1 == utf8.size() || utf8[i + 1] == '\n';
        const bool isPlain = (byte > ' ' && byte <= '~' && byte != '=') || (byte == ' ' && !endsLine);
        const std::size_t width = isPlain ? 1 : 3;
        if (column + width >= kLineBytes) {
            out += "=\r\n";
            column = 0;
        }
        isPlain ? out.append(1, byte) : (AppendEscaped(out, byte), out);
        column += width;
    }
    return out;
}

std::string Date(int64_t seconds) {
    constexpr const char* kDays[] = {"Sun", "Mon", "Tue", "Wed", "Thu", "Fri", "Sat"};
    constexpr const char* kMonths[] = {"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                       "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
    using namespace std::chrono;
    const sys_seconds time{std::chrono::seconds(seconds)};
    const sys_days day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    char text[64];
    std::snprintf(text, sizeof text, "%s, %02u %s %04d %02d:%02d:%02d +0000", kDays[weekday(day).c_encoding()],
                  static_cast<unsigned>(date.day()), kMonths[static_cast<unsigned>(date.month()) - 1],
                  static_cast<int>(date.year()), static_cast<int>(clock.hours().count()),
                  static_cast<int>(clock.minutes().count()), static_cast<int>(clock.seconds().count()));
    return text;
}

}  // namespace

std::vector<std::string> MailAddresses(std::wstring_view list) {
    std::vector<std::string> addresses;
    for (std::size_t at = 0; at < list.size();) {
        const std::size_t end = std::min(list.find(L';', at), list.size());
        if (const std::wstring_view text = Trimmed(list.substr(at, end - at)); IsAddress(text)) {
            addresses.push_back(WideToUtf8(text));
        }
        at = end + 1;
    }
    return addresses;
}

std::string MailText(const Mail& mail) {
    std::string to;
    for (const std::string& address : mail.to) {
        to += (to.empty() ? "<" : ",\r\n <") + address + ">";
    }
    return "Date: " + Date(mail.seconds) + "\r\nFrom: <" + mail.from + ">\r\nTo: " + to +
           "\r\nSubject: " + EncodedWords(WideToUtf8(mail.subject)) + "\r\nMessage-ID: <" + mail.id +
           mail.from.substr(mail.from.rfind('@')) +
           ">\r\nAuto-Submitted: auto-generated\r\nMIME-Version: 1.0\r\n"
           "Content-Type: text/plain; charset=utf-8\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n" +
           QuotedPrintable(WideToUtf8(mail.body));
}

}  // namespace wrb
