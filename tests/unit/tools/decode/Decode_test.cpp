#include "Decode.h"

#include <gtest/gtest.h>

#include <numeric>
#include <sstream>

#include "BundleRecord.h"
#include "ChildProcess.h"
#include "DbApiHeader.h"
#include "MsgSerializer.h"
#include "PfwLogSample.h"
#include "RecordingFormat.h"
#include "TempFolder.h"
#include "Text.h"
#include "VexorRecords.h"

namespace wrb {
namespace {

using Bytes = std::vector<uint8_t>;

Bytes Wide(std::wstring_view text) {
    const auto* const begin = reinterpret_cast<const uint8_t*>(text.data());
    return Bytes(begin, begin + text.size() * sizeof(wchar_t));
}

Bytes Narrow(std::string_view text) {
    return Bytes(text.begin(), text.end());
}

Bytes operator+(Bytes left, const Bytes& right) {
    left.insert(left.end(), right.begin(), right.end());
    return left;
}

template <typename Number>
Bytes Raw(const Number& number) {
    const auto* const begin = reinterpret_cast<const uint8_t*>(&number);
    return Bytes(begin, begin + sizeof number);
}

template <typename Body>
Bytes Message(const wchar_t* name, const Body& body) {
    CMsgSerializer message(name);
    message << body;
    return Bytes(message.Data(), message.Data() + message.GetSize());
}

// "offset+bytes name=value" of the fields from that one on, and the problem.
std::string Shown(const Decoded& decoded, std::size_t from = 0) {
    std::string text = decoded.kind;
    for (std::size_t i = from; i < decoded.fields.size(); ++i) {
        const DecodedField& field = decoded.fields[i];
        text += "|" + std::to_string(field.offset) + "+" + std::to_string(field.bytes) + " " + field.name + "=" +
                WideToUtf8(field.value);
    }
    return text + (decoded.problem.empty() ? "" : "!" + decoded.problem);
}

Bytes RecordingOf(const Bytes& message, const Bytes& answer) {
    RecordedCommand command;
    command.head.bytes += static_cast<uint32_t>(message.size() + answer.size());
    command.messageBytes = static_cast<uint32_t>(message.size());
    command.answerBytes = static_cast<uint32_t>(answer.size());
    return Raw(RecordingHead()) + Raw(command) + message + answer + Raw(RecordHead{16, RecordKind::End}) +
           Raw(uint64_t{1});
}

TEST(Decode, ShowsSmallMessagesFieldByField) {
    const struct {
        Bytes bytes;
        std::string shown;
    } kRows[] = {
        {{}, "unknown!none of the formats begins like this"},
        {{1, 0, 2}, "unknown|0+3 bytes=01 00 02!none of the formats begins like this"},
        {Wide(L"CMDHL_GET_CFG_PERMISSION\tp\t\t7\tx"),
         "command|0+48 command=CMDHL_GET_CFG_PERMISSION|50+2 reply pipe=p|54+0 uid=|56+2 group bit=7|60+2 field 5=x"},
        {Wide(L"CMDHL_PFW_UPDATE_CFW_COUNT\tu\t1\t2\t3"),
         "command|0+52 command=CMDHL_PFW_UPDATE_CFW_COUNT|54+2 uid=u|58+2 signed number=1|62+2 counter 1=2|66+2 "
         "counter 2=3"},
        {Wide({L"DB_GET_STATUS\t-5\tu\t0\0", 21}),
         "text command for the database server|0+26 command=DB_GET_STATUS|28+4 reply id=-5|34+2 uid=u|38+2 "
         "number=0|40+2 NUL="},
        {Wide({L"LOG_WRITE\t1\t2\t3\t4\ta\t5\tx\ty\0", 26}),
         "line for the log service|0+18 command=LOG_WRITE|20+2 time=1|24+2 process id=2|28+2 thread id=3|32+2 "
         "level=4|36+2 source file=a|40+2 line=5|44+6 text=x\ty|50+2 NUL="},
        {Wide(L"[A]\r\nK=1\n"), "text|0+8 line 1=[A]\r|10+6 line 2=K=1|18+0 line 3="},
        {Wide(L"17\t") + Bytes{0}, "text|0+4 field 1=17|6+0 field 2=|6+1 rest=00!bytes behind the end"},
        {Narrow("a=1&b=%41+c"), "form of a gateway request|0+3 a=1|4+7 b=A c"},
        {Narrow("--x\r\nContent-Disposition: n\r\n\r\nv\r\n--x--\r\n"),
         "form of a gateway request|0+3 boundary=--x|5+22 part 1 head=Content-Disposition: n|31+1 part 1 "
         "content=v|34+5 boundary=--x--"},
    };
    for (const auto& row : kRows) {
        EXPECT_EQ(Shown(Decode(row.bytes)), row.shown);
    }
}

// From the body on.
TEST(Decode, ShowsTheBodiesOfMessages) {
    constexpr std::size_t kHeadFields = 8;
    const auto from = [](const Bytes& bytes) {
        Decoded decoded = Decode(bytes);
        const std::size_t start = decoded.fields.at(kHeadFields).offset;
        for (DecodedField& field : decoded.fields) {
            field.offset -= std::min(field.offset, start);
        }
        return Shown(decoded, kHeadFields);
    };
    EXPECT_EQ(from(Message(L"DBV2_GET_SABLEX_CFG", std::wstring(L"u"))), "message|0+8 uid=u");
    EXPECT_EQ(from(Message(L"WC_SET_SPYWARE_LOG_EVENT", 2)), "message|0+8 event=2");
    EXPECT_EQ(from(Message(L"OTHER", 2)),
              "message|0+8 body=04 00 00 00 02 00 00 00!a message of this name has no known body");
    BundleRecordList<FARestoreValues> items;
    items.items.resize(2);
    items.items[1].fileName = L"f";
    EXPECT_EQ(
        from(Message(L"DBV2_GET_FA_RESTORE_ITEM", items)),
        "message|0+4 records=2|4+6 FASha1Hash 0=|10+6 FATaskId 0=|16+6 FAItemId 0=|22+6 FAFileDir 0=|28+6 "
        "FAFileName 0=|34+6 FASha1Hash 1=|40+6 FATaskId 1=|46+6 FAItemId 1=|52+6 FAFileDir 1=|58+8 FAFileName 1=f");
    SablexValues sablex;
    sablex.actionForFile = 0xFFFFFFFF;
    EXPECT_EQ(from(Message(L"DBV2_GET_SABLEX_CFG", BundleRecord<SablexValues>(sablex))),
              "message|0+8 flags=0|8+8 ActionForFile=-1 (0xFFFFFFFF)|16+8 ActionForProcess=0|24+6 ExceptionItem=|30+6 "
              "DS_ProcessName=");
    std::vector<tagVEXORPolicyItem> policies(1);
    policies[0].enable = true;
    EXPECT_EQ(from(Message(L"DBV2_GET_VEXOR_CUSTOM_BM_CFG", policies)),
              "message|0+4 policies=1|4+6 policyId 0=|10+8 action 0=0|18+8 enable 0=true");
    EXPECT_EQ(from(Message(L"DBV2_CLIENT_GET_ALL_SCAN_CFG", true)),
              "message|0+8 hasConfig=true!hasExtra needs 8 bytes; 0 are left");
}

// Names and places are those of the page's example: its lines from the body on are a field each.
TEST(Decode, AgreesWithThePage) {
    const std::string page = test::ReadAll(test::ProgramFolder() + L"wire-formats.md");
    const std::size_t begin = page.find("```hex") + 6;
    std::istringstream lines(page.substr(begin, page.find("```", begin) - begin));
    Bytes bytes;
    std::vector<std::pair<std::size_t, std::string>> expected;
    for (std::string line; std::getline(lines, line);) {
        const std::size_t bar = line.find("| ");
        if (bar != line.npos) {
            expected.emplace_back(bytes.size(), line.substr(bar + 2));
        }
        std::istringstream digits(line.substr(0, bar));
        for (unsigned byte = 0; digits >> std::hex >> byte;) {
            bytes.push_back(static_cast<uint8_t>(byte));
        }
    }
    const Decoded decoded = Decode(bytes);
    EXPECT_EQ(decoded.problem, "");
    std::size_t fields = 0;
    for (const auto& [offset, comment] : expected) {
        for (const DecodedField& field : decoded.fields) {
            if (field.offset == offset && offset >= 28) {
                EXPECT_EQ(comment.substr(0, field.name.size()), field.name);
                ++fields;
            }
        }
    }
    EXPECT_EQ(fields, decoded.fields.size() - 6) << "each but the format value and the control block";
}

template <typename Item>
void ExpectFirewallRecord() {
    const Item item = test::SampleRecord<Item>();
    const Decoded decoded = Decode(Raw(item) + Raw(item));
    EXPECT_EQ(decoded.problem, "");
    const std::string shown = Shown(decoded);
    for (const std::string part : {"firewall log|0+1 record 1: head=EF", "record 1: local address=192.168.0.10|",
                                   "record 2: process path=C:\\Program Files\\a.exe|",
                                   "record 2: process information=Gr\xC3\xBC\xC3\x9F"
                                   "e|",
                                   "record 2: type=65535|", "record 2: rear=FE|"}) {
        EXPECT_NE(shown.find(part), shown.npos) << shown;
    }
}

TEST(Decode, ShowsFirewallRecordsOfBothVersions) {
    ExpectFirewallRecord<SWRB_PFW_LOG_ITEM_V0>();
    ExpectFirewallRecord<SWRB_PFW_LOG_ITEM>();
    const Bytes one = Raw(test::SampleRecord<SWRB_PFW_LOG_ITEM>());
    EXPECT_EQ(Decode(one + Bytes(931)).problem, "record 2: ends too early: 932 bytes are announced, 931 are left");
}

TEST(Decode, ShowsARecordingWithItsMessages) {
    const Bytes recording = RecordingOf(Wide(L"CMDHL_ECHO\tp\tx"), Wide(L"x"));
    const std::string shown = Shown(Decode(recording));
    EXPECT_NE(shown.find("|56+20 #1 message: command=CMDHL_ECHO|78+2 #1 message: reply pipe=p|82+2 #1 message: "
                         "content=x|84+2 #1 answer: field 1=x|86+4 #2 bytes=16|90+4 #2 kind=3|94+8 #2 commands=1"),
              shown.npos)
        << shown;
}

// Every cut of every form: the fields stay within the bytes, and what is missing is said.
TEST(Decode, NamesWhatACutMessageLacks) {
    CMsgSerializer header(L"NULL");
    header << CDbApiHeaderContent();
    const Bytes headerBytes(header.Data(), header.Data() + header.GetSize());
    const Bytes wholes[] = {
        Raw(kDbApiMagic) + Raw(static_cast<uint32_t>(headerBytes.size())) + headerBytes +
            Message(L"DBV2_GET_CLIENT_NCIE_CFG", std::wstring(L"u")),
        Message(L"DBV2_GET_CLIENT_NCIE_CFG", BundleRecord<NcieValues>()),
        RecordingOf(Wide(L"CMDHL_ECHO\tp\tx"), Wide(L"x")),
    };
    for (const Bytes& whole : wholes) {
        EXPECT_EQ(Decode(whole).problem, "") << Shown(Decode(whole));
        for (std::size_t length = 4; length < whole.size(); ++length) {
            const Decoded decoded = Decode(std::span(whole).first(length));
            EXPECT_NE(decoded.problem, "") << decoded.kind << " " << length;
            const std::size_t covered =
                std::accumulate(decoded.fields.begin(), decoded.fields.end(), std::size_t{0},
                                [](std::size_t sum, const DecodedField& field) { return sum + field.bytes; });
            EXPECT_LE(covered, length);
        }
    }
}

}  // namespace
}  // namespace wrb
