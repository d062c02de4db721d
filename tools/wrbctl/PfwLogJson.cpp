#include "PfwLogJson.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <optional>
#include <string>

#include "IpAddress.h"
#include "PfwLogText.h"
#include "Text.h"

namespace wrb {
namespace {

template <typename Number>
void EncodeNumber(const JsonNode& line, const char* key, Number& number, Number defaultValue = 0) {
    const auto member = line.Member(key);
    const uint32_t value = member ? member->Number(0) : defaultValue;
    if (value > std::numeric_limits<Number>::max()) {
        member->Fail("must be at most " + std::to_string(std::numeric_limits<Number>::max()));
    }
    number = static_cast<Number>(value);
}

// The field's last character stays NUL.
template <std::size_t N>
void EncodeAnsi(const JsonNode& line, const char* key, char (&field)[N]) {
    const auto member = line.Member(key);
    const std::wstring text = member ? member->AnyText() : std::wstring();
    const std::string narrow = WideToAnsi(text);
    if (AnsiToWide(narrow) != text) {
        member->Fail("has characters that the system's ANSI code page lacks");
    }
    if (narrow.size() >= N) {
        member->Fail("must have at most " + std::to_string(N - 1) + " bytes");
    }
    std::memcpy(field, narrow.data(), narrow.size());
}

void EncodeInfo(const JsonNode& line, wchar_t (&field)[kPfwLogInfoCharacters]) {
    const auto member = line.Member("info");
    const std::wstring text = member ? member->AnyText() : std::wstring();
    if (text.size() >= kPfwLogInfoCharacters) {
        member->Fail("must have at most 127 characters");
    }
    text.copy(field, text.size());
}

void EncodeOctets(const JsonNode& line, const char* key, uint8_t (&octets)[4]) {
    const auto member = line.Member(key);
    const std::optional<IpAddress> address = ParseIpAddress(member ? member->AnyText() : L"0.0.0.0");
    const std::optional<Ipv4Octets> parsed = address ? FindIpv4(*address) : std::nullopt;
    if (!parsed) {
        member->Fail("must be an IPv4 address; version 1 holds others");
    }
    std::ranges::copy(*parsed, octets);
}

void EncodeHosts(const JsonNode& line, SWRB_PFW_LOG_ITEM_V0& item) {
    EncodeOctets(line, "localHost", item.dwLocalIP);
    EncodeOctets(line, "remoteHost", item.dwRemoteIP);
}

void EncodeHosts(const JsonNode& line, SWRB_PFW_LOG_ITEM& item) {
    EncodeAnsi(line, "localHost", item.szLocalHost);
    EncodeAnsi(line, "remoteHost", item.szRemoteHost);
}

template <typename Item>
void Encode(const JsonNode& line, Item& item) {
    line.RefuseUnknown({"version", "time", "direction", "port", "protocol", "type", "subType", "localHost",
                        "remoteHost", "path", "info", "head", "rear"});
    item = {};
    EncodeNumber(line, "head", item.byHead, kPfwLogHead);
    EncodeNumber(line, "rear", item.byRear, kPfwLogRear);
    EncodeNumber(line, "time", item.dwTime);
    EncodeNumber(line, "direction", item.byDirection);
    EncodeNumber(line, "port", item.wPort);
    EncodeNumber(line, "protocol", item.wProtocol);
    EncodeNumber(line, "type", item.wType);
    EncodeNumber(line, "subType", item.wSubType);
    EncodeHosts(line, item);
    EncodeAnsi(line, "path", item.szPVName);
    EncodeInfo(line, item.wszPVInfo);
}

template <typename Item>
Json::Value Decode(const Item& item, PfwLogVersion version) {
    PfwLogTexts texts;
    DecodePfwLogTexts(item, texts);
    Json::Value line;
    line["version"] = static_cast<int>(version);
    line["time"] = item.dwTime;
    line["direction"] = item.byDirection;
    line["port"] = item.wPort;
    line["protocol"] = item.wProtocol;
    line["type"] = item.wType;
    line["subType"] = item.wSubType;
    line["localHost"] = WideToUtf8(texts.localHost);
    line["remoteHost"] = WideToUtf8(texts.remoteHost);
    line["path"] = WideToUtf8(texts.pvName);
    line["info"] = WideToUtf8(texts.pvInfo);
    if (!HasPfwLogMarkers(item)) {
        line["head"] = item.byHead;
        line["rear"] = item.byRear;
    }
    return line;
}

}  // namespace

void EncodePfwLogRecord(const JsonNode& line, SWRB_PFW_LOG_ITEM_V0& item) {
    Encode(line, item);
}
void EncodePfwLogRecord(const JsonNode& line, SWRB_PFW_LOG_ITEM& item) {
    Encode(line, item);
}

Json::Value DecodePfwLogRecord(const SWRB_PFW_LOG_ITEM_V0& item) {
    return Decode(item, PfwLogVersion::kV0);
}
Json::Value DecodePfwLogRecord(const SWRB_PFW_LOG_ITEM& item) {
    return Decode(item, PfwLogVersion::kV1);
}

}  // namespace wrb
