#include "cgi_GetParameter.h"

#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "FakeGateway.h"
#include "PostSizeLimit.h"
#include "UnEscapeUrl.h"

#include <cstdlib>
#include <new>

namespace {
bool g_memoryLacks = false;  // for the allocations that yield null
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return g_memoryLacks ? nullptr : std::malloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return g_memoryLacks ? nullptr : std::malloc(size);
}

namespace {

using wrb::test::CFakeGateway;
using wrb::test::Parameters;

constexpr char kForm[] = "application/x-www-form-urlencoded";
constexpr wchar_t kReader[] = L"CGetCGINameValuePair::CGetCGINameValuePair";

// What came of a request.
struct tagOutcome {
    int status;
    std::wstring parameters;
    std::vector<tagCapturedLine> lines;

    bool Logged(uint32_t level, const std::wstring& text) const {
        return std::ranges::find(lines, tagCapturedLine{level, text}) != lines.end();
    }
};

tagOutcome Fetch(CFakeGateway& gateway) {
    TakeCapturedLog();
    CGetParameterImp request(false, false, gateway);
    return {request.GetInitializationResult(), Parameters(request), TakeCapturedLog()};
}

// What the same text gives as a query and as the body of a form.
TEST(GetParameter, TakesQueriesAndFormsApart) {
    const struct {
        std::string text;
        std::wstring parameters;
    } cases[] = {
        {"a=1&b=x+y%21", L"a=1|b=x y!|"},
        {"flag", L"flag=|"},
        {"", L""},
        {"&&\r\na=1\n\n&b=2&", L"a=1|b=2|"},
        {"A=1&a=2", L"A=1|a=2|"},
        {"a==1&b:2&c 3&d=", L"a==1|b=2|c=3|d=|"},
        {"=&:\"&+=", L""},
        {"\"a\"=1&b=\"x\"y&c=1:2 3=4", L"a==1|b=x|c=1:2 3=4|"},
        {"a%3D=%26%0d%0A", L"a==&\r\n|"},
        {"a=%2B+%2b", L"a=+ +|"},
        {"a=%C3%A4%u00e4%U4F60%ud83d%uDE00", L"a=\u00e4\u00e4\u4f60\U0001F600|"},
        {"a=%&b=%4&c=%4g&d=%u12&e=%u123x&f=%", L"a=%|b=%4|c=%4g|d=%u12|e=%u123x|f=%|"},
        {"a=x%00y&b=%u0000", L"a=x%00y|b=%u0000|"},
        {"a=%ff", L"a=\uFFFD|"},
    };
    for (const auto& query : cases) {
        CFakeGateway gateway;
        gateway.variables = {{L"REQUEST_METHOD", "GET"}, {L"QUERY_STRING", query.text}};
        const tagOutcome get = Fetch(gateway);
        EXPECT_TRUE(get.status == kCgiFetched && get.parameters == query.parameters) << query.text;
        gateway.Post(std::string("APPLICATION/x-www-form-urlencoded; charset=utf-8"), query.text);
        EXPECT_EQ(Fetch(gateway).parameters, query.parameters) << query.text;
    }
}

TEST(GetParameter, AnswersEveryKindOfRequestWithItsStatus) {
    const struct {
        std::map<std::wstring, std::string> variables;
        int status;
    } cases[] = {
        {{}, kCgiBadMethod},
        {{{L"REQUEST_METHOD", "get"}}, kCgiBadMethod},
        {{{L"REQUEST_METHOD", "POST"}}, kCgiFetched},
        {{{L"REQUEST_METHOD", "POST"}, {L"CONTENT_TYPE", ""}}, kCgiBadContentType},
        {{{L"REQUEST_METHOD", "POST"}, {L"CONTENT_TYPE", "multipart/form-dat"}}, kCgiBadContentType},
        {{{L"REQUEST_METHOD", "POST"}, {L"CONTENT_TYPE", "MultiPart/Form-Data"}}, kCgiMultipartNoBoundary},
    };
    for (const auto& request : cases) {
        CFakeGateway gateway;
        gateway.variables = request.variables;
        const tagOutcome outcome = Fetch(gateway);
        EXPECT_EQ(outcome.status, request.status);
        EXPECT_EQ(outcome.parameters, L"");
        EXPECT_EQ(
            outcome.Logged('D', L"CGetParameterImp::FetchParameters - env CONTENT_TYPE with _HTML_CONTENT_TYPE_FORM"),
            request.status == kCgiBadContentType);
    }
}

// The limit as the two INI files give it; a body at the limit and one beyond.
TEST(GetParameter, RefusesABodyBeyondTheLimitAndReadsOneUpToIt) {
    const struct {
        std::string scanIni;
        std::string serverIni;
        std::size_t limitInK;
    } cases[] = {
        {"", "", 5120},
        {"", "MaxCGIPostSizeInK=1", 1},
        {"", "MaxCGIPostSizeInK=1048577", 1048576},
        {"UseDefaultMaxCGIPostSize=1", "MaxCGIPostSizeInK=1", 5120},
        {"UseDefaultMaxCGIPostSize=0", "MaxCGIPostSizeInK=-7", 5120},
        {"UseDefaultMaxCGIPostSize=no", "MaxCGIPostSizeInK=much", 5120},
    };
    for (const auto& ini : cases) {
        CFakeGateway gateway;
        std::filesystem::create_directories(gateway.Home() / L"private");
        wrb::test::WriteAll(gateway.Home() / L"wrbscan.ini", "[Global Setting]\r\n" + ini.scanIni + "\r\n");
        wrb::test::WriteAll(gateway.Home() / L"private\\wrbserver.ini",
                            "[INI_SERVER_SECTION]\r\n" + ini.serverIni + "\r\n");
        const std::size_t limit = ini.limitInK * 1024;
        EXPECT_EQ(wrb::PostSizeLimit(gateway), static_cast<int32_t>(limit));
        for (std::size_t length = limit; length <= limit + 1 && limit < 1 << 30; ++length) {
            gateway.Post(kForm, "a=" + std::string(length - 2, 'x'));
            const tagOutcome outcome = Fetch(gateway);
            EXPECT_EQ(outcome.status, kCgiFetched);
            EXPECT_EQ(outcome.parameters.size(), length == limit ? length + 1 : 0);
            EXPECT_TRUE(outcome.Logged('D', L"CGetCGINameValuePair::getPostSizeLimitInK - CGI UseDefaultPostSize=[" +
                                                std::wstring(ini.scanIni.ends_with('1') ? L"1" : L"0") + L"]"));
            EXPECT_EQ(
                outcome.Logged('E', std::wstring(kReader) + L" - Content size[" + std::to_wstring(length) +
                                        L"] is large then POST size limitation: [" + std::to_wstring(limit) + L"]."),
                length > limit);
        }
    }
}

TEST(GetParameter, SurvivesEveryAnnouncedLength) {
    const std::wstring name = kReader;
    const std::wstring tooLong = L"] is large then POST size limitation: [5242880].";
    const struct {
        std::string announced;
        std::wstring parameters;
        std::optional<tagCapturedLine> line;  // nothing: not a line at all
    } cases[] = {
        {"3", L"a=1|", {{'D', name + L" - <<<"}}},
        {"2", L"a=|", {{'D', name + L" - fread >>>"}}},
        {"9", L"a=1|", {{'W', name + L" - the body ends at [3] of [9] bytes."}}},
        {"5242880", L"a=1|", {{'W', name + L" - the body ends at [3] of [5242880] bytes."}}},
        {"-1", L"", {{'E', name + L" - Content size[-1" + tooLong}}},
        {"9223372036854775808", L"", {{'E', name + L" - Content size[2147483647" + tooLong}}},
        {"-99999999999999999999", L"", {{'E', name + L" - Content size[-2147483648" + tooLong}}},
        {"3 ", L"", {{'W', name + L" - CONTENT_LENGTH is no number: [3 ]."}}},
        {"-", L"", {{'W', name + L" - CONTENT_LENGTH is no number: [-]."}}},
        {"0x3", L"", {{'W', name + L" - CONTENT_LENGTH is no number: [0x3]."}}},
        {"-0", L"", {}},
        {"", L"", {}},
    };
    for (const auto& length : cases) {
        CFakeGateway gateway;
        gateway.Post(kForm, "a=1", length.announced);
        const tagOutcome outcome = Fetch(gateway);
        EXPECT_EQ(outcome.status, kCgiFetched);
        EXPECT_EQ(outcome.parameters, length.parameters) << length.announced;
        EXPECT_TRUE(length.line ? outcome.Logged(length.line->level, length.line->text) : outcome.lines.empty())
            << length.announced;
    }
}

TEST(GetParameter, KeepsRawDataBehindAFormInAFile) {
    using namespace std::string_literals;
    const struct {
        std::string body;
        bool allowed;
        std::optional<std::string> data;  // nothing: no file
    } cases[] = {
        {"a=1&BinaryDataBlock=\0x+y&\0z"s, true, "x+y&\0z"s}, {"a=1&BinaryDataBlock=\0x"s, false, std::nullopt},
        {"a=1&BinaryDataBlock=\0"s, true, std::nullopt},      {"a=1&BinaryDataBlock=&\0x"s, true, "\0x"s},
        {"a=1&BinaryDataBlock=q\0x"s, true, std::nullopt},    {"a=1&BinaryDataBlock=&b=2\0x"s, true, std::nullopt},
    };
    for (const auto& block : cases) {
        CFakeGateway gateway;
        gateway.Post(kForm, block.body);
        TakeCapturedLog();
        CGetParameterImp request(block.allowed, false, gateway);
        EXPECT_STREQ(request.Find(L"a"), L"1");
        ASSERT_EQ(gateway.Uploads().size(), block.data ? 1u : 0u) << block.body;
        if (block.data) {
            const std::filesystem::path file = gateway.Uploads().front();
            EXPECT_EQ(wrb::test::ReadAll(file), *block.data);
            EXPECT_EQ(file.wstring(), request.FindUpload(L"binarydatablock"));
            EXPECT_EQ(file.filename().wstring().find_first_not_of(L"0123456789ABCDEF"), 32u);
            EXPECT_EQ(file.extension(), L".tmp");
            const tagCapturedLine line{
                'D', std::wstring(kReader) + L" - write Length = " + std::to_wstring(block.data->size())};
            EXPECT_EQ(std::ranges::count(TakeCapturedLog(), line), 1);
        }
    }
}

TEST(GetParameter, DeletesUploadsAndNothingElse) {
    CFakeGateway gateway;
    gateway.Post(kForm, std::string("BinaryDataBlock=\0x", 18));
    CGetParameterImp request(true, false, gateway);
    ASSERT_EQ(gateway.Uploads().size(), 1u);
    const std::wstring path = gateway.Uploads().front().wstring();
    const std::wstring bare = gateway.Uploads().front().filename().wstring();
    wrb::test::WriteAll(gateway.Home() / L"Temp\\MSG1.tmp", "another's");
    wrb::test::WriteAll(gateway.Home() / bare, "outside");
    for (const std::wstring& name : {std::wstring(L"MSG1.tmp"), L"..\\" + bare, (gateway.Home() / bare).wstring(),
                                     bare + L":s", L"\\\\?\\" + path}) {
        EXPECT_FALSE(request.DeleteUnwantedUploadFile(name.c_str()));
    }
    EXPECT_FALSE(request.DeleteUnwantedUploadFile(nullptr));
    EXPECT_EQ(gateway.Uploads().size(), 2u);
    const std::wstring function = L"CGetParameterImp::DeleteUnwantedUploadFile";
    TakeCapturedLog();
    EXPECT_TRUE(request.DeleteUnwantedUploadFile(path.c_str()));
    EXPECT_FALSE(request.DeleteUnwantedUploadFile(bare.c_str()));
    EXPECT_EQ(TakeCapturedLog(),
              (std::vector<tagCapturedLine>{{'D', function + L" - Delete file full path: " + path},
                                            {'D', function + L" - Delete file full path: " + path},
                                            {2, function + L" - Fail to delete file, error = [2]"}}));
    EXPECT_TRUE(std::filesystem::exists(gateway.Home() / bare));
}

TEST(GetParameter, HasNoParametersWithoutMemoryForTheBody) {
    for (const auto& [type, status] :
         {std::pair{kForm, kCgiFetched}, std::pair{"multipart/form-data; boundary=b", kCgiMultipartNoMemory}}) {
        CFakeGateway gateway;
        gateway.Post(type, "a=1");
        g_memoryLacks = true;
        const tagOutcome outcome = Fetch(gateway);
        g_memoryLacks = false;
        EXPECT_TRUE(outcome.status == status && outcome.parameters.empty());
        EXPECT_EQ(outcome.Logged('D', std::wstring(kReader) + L" - malloc failed."), type == kForm);
    }
}

// The front, on this process: it has no request, so the status is the one of a missing method.
TEST(GetParameter, EveryObjectIsAViewOfOneRequest) {
    g_memoryLacks = true;
    CGetParameter none;
    EXPECT_EQ(none.GetInitializationResult(), kCgiNoImplementation);
    EXPECT_EQ(none.Get(L"a", 5), 5);
    EXPECT_STREQ(none.Dump(), "");
    EXPECT_NE(none.AddParameter(L"a", L"1"), 0);
    g_memoryLacks = false;
    CGetParameter first;
    CGetParameter request(true, true);
    EXPECT_EQ(request.GetInitializationResult(), kCgiBadMethod);
    EXPECT_EQ(first.AddParameter(L"Number", L"42x"), 0);
    EXPECT_EQ(first.AddParameter(L"Blank", nullptr), 0);
    EXPECT_EQ(first.AddParameter(L"Text", L"<a href='x'>&\"\u00e4"), 0);
    EXPECT_EQ(request.Get(L"NUMBER", 5), 42);
    EXPECT_EQ(request.Get(L"blank", 5), 0);
    EXPECT_EQ(request.Get(L"missing", 5), 5);
    EXPECT_STREQ(request.GetValueByName(L"missing", L"d"), L"d");
    EXPECT_STREQ(request.GetValueByName(L"number", L"d"), L"42x");
    EXPECT_STREQ(request.Dump(),
                 "<table border=\"1\"><tr><th>Name</th><th>Value</th></tr>\n"
                 "<tr><td>Number</td><td>42x</td></tr>\n"
                 "<tr><td>Blank</td><td></td></tr>\n"
                 "<tr><td>Text</td><td>&lt;a href=&#39;x&#39;&gt;&amp;&quot;\xC3\xA4</td></tr>\n</table>\n");
    const wchar_t* name = nullptr;
    const wchar_t* value = nullptr;
    while (request.EnumPara(name, value, true)) {
        EXPECT_STRNE(value, L"");
    }
    EXPECT_EQ(name, nullptr);
    request.ResetEnumPara();
    EXPECT_TRUE(request.EnumPara(name, value, false));
    EXPECT_STREQ(name, L"Number");
    request.Reset();
    EXPECT_FALSE(first.EnumPara(name, value, false));
    EXPECT_EQ(first.Get(L"number", 5), 5);
}

TEST(GetParameter, TakesMuchOfAnything) {
    using namespace std::string_literals;
    const struct {
        std::string head;
        std::string unit;
        std::wstring parameters;
        std::wstring each;
        std::wstring tail;
    } cases[] = {
        {"", "%", L"", L"%", L"=|"},        {"a=", "%u+", L"a=", L"%u ", L"|"}, {"", "a&", L"", L"a=|", L""},
        {"", "%u0041a", L"", L"Aa", L"=|"}, {"a=1", "&", L"a=1|", L"", L""},    {"", "=", L"", L"", L""},
        {"", "\"", L"", L"", L""},          {"a=1", "\0"s, L"a=1|", L"", L""},
    };
    for (auto anything : cases) {
        for (std::size_t i = 0; i < 200000; ++i) {
            anything.head += anything.unit;
            anything.parameters += anything.each;
        }
        CFakeGateway gateway;
        gateway.Post(kForm, anything.head);
        EXPECT_TRUE(Fetch(gateway).parameters == anything.parameters + anything.tail) << anything.unit;
    }
    wchar_t small[4] = L"xxx";
    EXPECT_EQ(cgi_UnEscapeUrl("%41%42%43%44", small, 4), 3u);
    EXPECT_STREQ(small, L"ABC");
}

}  // namespace
