#include "cgi_GetParameter.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "CapturedLog.h"
#include "Gateway.h"
#include "MultipartForm.h"
#include "TempFolder.h"
#include "cgi_GetParameterImp.h"

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

using namespace std::string_literals;

constexpr char kForm[] = "application/x-www-form-urlencoded";
const std::wstring kReader = L"CGetCGINameValuePair::CGetCGINameValuePair";

// A request as a test wants it, with a home folder of its own.
struct FakeGateway final : wrb::IGateway {
    FakeGateway() { std::filesystem::create_directories(home / L"web\\console\\cgi"); }

    std::optional<std::string> Variable(const wchar_t* name) override {
        const auto found = variables.find(name);
        return found != variables.end() ? std::optional(found->second) : std::nullopt;
    }
    std::size_t ReadBody(char* buffer, std::size_t size) override { return body.copy(buffer, size); }
    std::wstring HomeFolder() override { return home.Path() + L"\\"; }
    std::wstring ProgramFolder() override { return home.Path() + L"\\web\\console\\cgi\\"; }

    // A POST that announces its length, unless that is given.
    void Post(const std::string& contentType, const std::string& bytes, std::optional<std::string> length = {}) {
        body = bytes;
        variables = {{L"REQUEST_METHOD", "POST"},
                     {L"CONTENT_TYPE", contentType},
                     {L"CONTENT_LENGTH", length.value_or(std::to_string(bytes.size()))}};
    }

    // What lies in the folder of uploads.
    std::vector<std::filesystem::path> Uploads() const {
        std::error_code none;
        return std::vector<std::filesystem::path>(std::filesystem::directory_iterator(home / L"Temp", none),
                                                  std::filesystem::directory_iterator());
    }

    const wrb::test::TempFolder home;
    std::map<std::wstring, std::string> variables;
    std::string body;
};

// "name=value" of every parameter, with a bar behind each.
std::wstring Parameters(CGetParameterImp& request) {
    std::wstring all;
    const wchar_t* name = nullptr;
    const wchar_t* value = nullptr;
    for (request.ResetEnumPara(); request.EnumPara(name, value, false);) {
        all += std::wstring(name) + L"=" + value + L"|";
    }
    return all;
}

// What came of a request.
struct Outcome {
    int status;
    std::wstring parameters;
    std::vector<CapturedLine> lines;

    bool Logged(uint32_t level, const std::wstring& text) const {
        return std::ranges::find(lines, CapturedLine{level, text}) != lines.end();
    }
};

Outcome Fetch(FakeGateway& gateway) {
    TakeCapturedLog();
    CGetParameterImp request(false, false, gateway);
    return {request.GetInitializationResult(), Parameters(request), TakeCapturedLog()};
}

// So many that only linear work ends in time.
template <typename Char>
std::basic_string<Char> Many(const Char* unit) {
    std::basic_string<Char> all;
    for (std::size_t i = 0; i < 200000; ++i) {
        all += unit;
    }
    return all;
}

// What the same text gives as a query and as the body of a form.
TEST(GetParameter, TakesQueriesAndFormsApart) {
    const std::pair<std::string, std::wstring> cases[] = {
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
        {"a=%C3%A4%u00e4%U4F60%ud83d%uDE00%f0%9F%98%80", L"a=\u00e4\u00e4\u4f60\U0001F600\U0001F600|"},
        {"a=%&b=%4&c=%4g&d=%u12&e=%u123x&f=%", L"a=%|b=%4|c=%4g|d=%u12|e=%u123x|f=%|"},
        {"a=x%00y&b=%u0000", L"a=x%00y|b=%u0000|"},
        {"a=%ff", L"a=\uFFFD|"},
        {Many("%"), Many(L"%") + L"=|"},
        {Many("%u0041a"), Many(L"Aa") + L"=|"},
        {"a=" + Many("%u+"), L"a=" + Many(L"%u ") + L"|"},
        {Many("a&"), Many(L"a=|")},
        {Many("="), L""},
        {Many("\""), L""},
        {"a=1" + Many("&"), L"a=1|"},
        {"a=1" + std::string(200000, '\0'), L"a=1|"},
    };
    for (const auto& [text, parameters] : cases) {
        FakeGateway gateway;
        gateway.variables = {{L"REQUEST_METHOD", "GET"}, {L"QUERY_STRING", text}};
        const Outcome get = Fetch(gateway);
        EXPECT_TRUE(get.status == kCgiFetched && get.parameters == parameters) << text.substr(0, 99);
        gateway.Post("APPLICATION/x-www-form-urlencoded; charset=utf-8", text);
        EXPECT_TRUE(Fetch(gateway).parameters == parameters) << text.substr(0, 99);
    }
}

TEST(GetParameter, AnswersEveryKindOfRequestWithItsStatus) {
    const std::pair<std::map<std::wstring, std::string>, int> cases[] = {
        {{}, kCgiBadMethod},
        {{{L"REQUEST_METHOD", "get"}}, kCgiBadMethod},
        {{{L"REQUEST_METHOD", "POST"}}, kCgiFetched},
        {{{L"REQUEST_METHOD", "POST"}, {L"CONTENT_TYPE", ""}}, kCgiBadContentType},
        {{{L"REQUEST_METHOD", "POST"}, {L"CONTENT_TYPE", "multipart/form-dat"}}, kCgiBadContentType},
        {{{L"REQUEST_METHOD", "POST"}, {L"CONTENT_TYPE", "MultiPart/Form-Data"}}, kCgiMultipartNoBoundary},
    };
    for (const auto& [variables, status] : cases) {
        FakeGateway gateway;
        gateway.variables = variables;
        const Outcome outcome = Fetch(gateway);
        EXPECT_EQ(outcome.status, status);
        EXPECT_EQ(outcome.parameters, L"");
        EXPECT_EQ(
            outcome.Logged('D', L"CGetParameterImp::FetchParameters - env CONTENT_TYPE with _HTML_CONTENT_TYPE_FORM"),
            status == kCgiBadContentType);
    }
}

// The limit as the two INI files give it.
TEST(GetParameter, RefusesABodyBeyondTheLimit) {
    const std::tuple<std::string, std::string, std::size_t> cases[] = {
        {"", "", 5120},
        {"", "MaxCGIPostSizeInK=1", 1},
        {"", "MaxCGIPostSizeInK=1048577", 1048576},
        {"UseDefaultMaxCGIPostSize=1", "MaxCGIPostSizeInK=1", 5120},
        {"UseDefaultMaxCGIPostSize=0", "MaxCGIPostSizeInK=-7", 5120},
        {"UseDefaultMaxCGIPostSize=no", "MaxCGIPostSizeInK=much", 5120},
    };
    for (const auto& [scanIni, serverIni, limitInK] : cases) {
        FakeGateway gateway;
        std::filesystem::create_directories(gateway.home / L"private");
        wrb::test::WriteAll(gateway.home / L"wrbscan.ini", "[Global Setting]\r\n" + scanIni + "\r\n");
        wrb::test::WriteAll(gateway.home / L"private\\wrbserver.ini", "[INI_SERVER_SECTION]\r\n" + serverIni + "\r\n");
        const std::size_t limit = limitInK * 1024;
        gateway.Post(kForm, "a=1", std::to_string(limit + 1));
        const Outcome outcome = Fetch(gateway);
        EXPECT_EQ(outcome.parameters, L"");
        const std::wstring useDefault = scanIni.ends_with('1') ? L"1" : L"0";
        EXPECT_EQ(
            outcome.lines,
            (std::vector<CapturedLine>{
                {'D', L"CGetCGINameValuePair::getPostSizeLimitInK - CGI UseDefaultPostSize=[" + useDefault + L"]"},
                {'E', kReader + L" - Content size[" + std::to_wstring(limit + 1) +
                          L"] is large then POST size limitation: [" + std::to_wstring(limit) + L"]."}}));
    }
}

TEST(GetParameter, SurvivesEveryAnnouncedLength) {
    const std::wstring tooLong = L"] is large then POST size limitation: [5242880].";
    // Without a line: not a line at all.
    const std::tuple<std::string, std::wstring, std::optional<CapturedLine>> cases[] = {
        {"3", L"a=1|", CapturedLine{'D', kReader + L" - <<<"}},
        {"2", L"a=|", CapturedLine{'D', kReader + L" - fread >>>"}},
        {"9", L"a=1|", CapturedLine{'W', kReader + L" - the body ends at [3] of [9] bytes."}},
        {"5242880", L"a=1|", CapturedLine{'W', kReader + L" - the body ends at [3] of [5242880] bytes."}},
        {"-1", L"", CapturedLine{'E', kReader + L" - Content size[-1" + tooLong}},
        {"9223372036854775808", L"", CapturedLine{'E', kReader + L" - Content size[2147483647" + tooLong}},
        {"-99999999999999999999", L"", CapturedLine{'E', kReader + L" - Content size[-2147483648" + tooLong}},
        {"3 ", L"", CapturedLine{'W', kReader + L" - CONTENT_LENGTH is no number: [3 ]."}},
        {"-", L"", CapturedLine{'W', kReader + L" - CONTENT_LENGTH is no number: [-]."}},
        {"0x3", L"", CapturedLine{'W', kReader + L" - CONTENT_LENGTH is no number: [0x3]."}},
        {"-0", L"", std::nullopt},
        {"", L"", std::nullopt},
    };
    for (const auto& [announced, parameters, line] : cases) {
        FakeGateway gateway;
        gateway.Post(kForm, "a=1", announced);
        const Outcome outcome = Fetch(gateway);
        EXPECT_EQ(outcome.status, kCgiFetched);
        EXPECT_EQ(outcome.parameters, parameters) << announced;
        EXPECT_TRUE(line ? outcome.Logged(line->level, line->text) : outcome.lines.empty()) << announced;
    }
}

TEST(GetParameter, KeepsRawDataBehindAFormInAFile) {
    // Without data: no file.
    const std::tuple<std::string, bool, std::optional<std::string>> cases[] = {
        {"a=1&BinaryDataBlock=\0x+y&\0z"s, true, "x+y&\0z"s}, {"a=1&BinaryDataBlock=\0x"s, false, std::nullopt},
        {"a=1&BinaryDataBlock=\0"s, true, std::nullopt},      {"a=1&BinaryDataBlock=&\0x"s, true, "\0x"s},
        {"a=1&BinaryDataBlock=q\0x"s, true, std::nullopt},    {"a=1&BinaryDataBlock=&b=2\0x"s, true, std::nullopt},
    };
    for (const auto& [body, allowed, data] : cases) {
        FakeGateway gateway;
        gateway.Post(kForm, body);
        TakeCapturedLog();
        CGetParameterImp request(allowed, false, gateway);
        EXPECT_STREQ(request.Find(L"a"), L"1");
        ASSERT_EQ(gateway.Uploads().size(), data ? 1u : 0u) << body;
        if (data) {
            const std::filesystem::path file = gateway.Uploads().front();
            EXPECT_EQ(wrb::test::ReadAll(file), *data);
            EXPECT_EQ(file.wstring(), request.FindUpload(L"binarydatablock"));
            EXPECT_EQ(file.filename().wstring().find_first_not_of(L"0123456789ABCDEF"), 32u);
            EXPECT_EQ(file.extension(), L".tmp");
            const CapturedLine line{'D', kReader + L" - write Length = " + std::to_wstring(data->size())};
            EXPECT_EQ(std::ranges::count(TakeCapturedLog(), line), 1);
        }
    }
}

TEST(GetParameter, DeletesUploadsAndNothingElse) {
    FakeGateway gateway;
    gateway.Post(kForm, std::string("BinaryDataBlock=\0x", 18));
    CGetParameterImp request(true, false, gateway);
    ASSERT_EQ(gateway.Uploads().size(), 1u);
    const std::wstring path = gateway.Uploads().front().wstring();
    const std::wstring bare = gateway.Uploads().front().filename().wstring();
    wrb::test::WriteAll(gateway.home / L"Temp\\MSG1.tmp", "another's");
    wrb::test::WriteAll(gateway.home / bare, "outside");
    for (const std::wstring& name : {std::wstring(L"MSG1.tmp"), L"..\\" + bare, (gateway.home / bare).wstring(),
                                     bare + L":s", L"\\\\?\\" + path}) {
        EXPECT_FALSE(request.DeleteUnwantedUploadFile(name.c_str()));
    }
    EXPECT_FALSE(request.DeleteUnwantedUploadFile(nullptr));
    EXPECT_EQ(gateway.Uploads().size(), 2u);
    const std::wstring function = L"CGetParameterImp::DeleteUnwantedUploadFile";
    TakeCapturedLog();
    EXPECT_TRUE(request.DeleteUnwantedUploadFile(path.c_str()));
    EXPECT_FALSE(request.DeleteUnwantedUploadFile(bare.c_str()));
    EXPECT_EQ(TakeCapturedLog(), (std::vector<CapturedLine>{{'D', function + L" - Delete file full path: " + path},
                                                            {'D', function + L" - Delete file full path: " + path},
                                                            {2, function + L" - Fail to delete file, error = [2]"}}));
    EXPECT_TRUE(std::filesystem::exists(gateway.home / bare));
}

TEST(GetParameter, HasNoParametersWithoutMemoryForTheBody) {
    for (const auto& [type, status] :
         {std::pair{kForm, kCgiFetched}, std::pair{"multipart/form-data; boundary=b", kCgiMultipartNoMemory}}) {
        FakeGateway gateway;
        gateway.Post(type, "a=1");
        g_memoryLacks = true;
        const Outcome outcome = Fetch(gateway);
        g_memoryLacks = false;
        EXPECT_TRUE(outcome.status == status && outcome.parameters.empty());
        EXPECT_EQ(outcome.Logged('D', kReader + L" - malloc failed."), type == kForm);
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

TEST(UnEscapeUrl, IsCutToTheBuffer) {
    wchar_t small[4] = L"xxx";
    EXPECT_EQ(cgi_UnEscapeUrl("%41%42%43%44", small, 4), 3u);
    EXPECT_STREQ(small, L"ABC");
}

constexpr char kMultipart[] = "Multipart/Form-Data; charset=x; boundary=\"b d\"";

std::string Part(const std::string& disposition, const std::string& content) {
    return "--b d\r\nContent-Disposition: form-data; " + disposition + "\r\n\r\n" + content + "\r\n";
}

const std::string kGood = Part("name=\"a\"", "1\r\n--b dx\r\n--b") +
                          Part("name=\"file\"; filename=\"C:\\\\x\\..\\two words.ini\"", "[S]\0\r\n"s) +
                          Part("name=none; filename=\"\"", "") + "--b d--";

TEST(Multipart, ReadsFieldsAndFiles) {
    FakeGateway gateway;
    gateway.Post(kMultipart, "preamble\r\n" + kGood + "\r\nepilogue");
    CGetParameterImp request(false, false, gateway);
    ASSERT_EQ(request.GetInitializationResult(), kCgiFetched);
    ASSERT_EQ(gateway.Uploads().size(), 1u);
    const std::filesystem::path file = gateway.Uploads().front();
    EXPECT_EQ(Parameters(request),
              L"a=1\r\n--b dx\r\n--b|file=" + file.wstring() + L"|file.filename=two words.ini|none=|none.filename=|");
    EXPECT_EQ(wrb::test::ReadAll(file), "[S]\0\r\n"s);
    EXPECT_EQ(file.wstring(), request.FindUpload(L"FILE"));
    EXPECT_STREQ(request.FindUpload(L"none"), L"");
}

TEST(Multipart, RefusesEveryCutAndLeavesNoFile) {
    for (std::size_t length = 1; length < kGood.size(); ++length) {
        FakeGateway gateway;
        for (const bool announced : {true, false}) {
            gateway.Post(kMultipart, kGood.substr(0, length), std::to_string(announced ? kGood.size() : length));
            const Outcome outcome = Fetch(gateway);
            EXPECT_EQ(outcome.status, announced ? kCgiMultipartCutBody : kCgiMultipartNoEnd) << length;
            EXPECT_EQ(outcome.parameters, L"");
            EXPECT_TRUE(gateway.Uploads().empty());
            EXPECT_EQ(outcome.lines.back().level, uint32_t{'E'});
        }
    }
}

TEST(Multipart, AnswersEveryFaultWithItsStatus) {
    const std::string file = Part("name=f; filename=f", "x");
    std::string thousand;
    for (std::size_t i = 0; i < wrb::kMostMultipartParts; ++i) {
        thousand += Part("name=f", "x");
    }
    std::vector<std::tuple<std::string, std::string, int>> cases{
        {kMultipart, "--b d--", kCgiFetched},
        {kMultipart, "--b d \t\r\nX: y\r\nCONTENT-DISPOSITION:form-data;name=a\r\n\r\n\r\n--b d--", kCgiFetched},
        {kMultipart, "--b d\r\nContent-Disposition: form-data; name=a\r\n\r\n--b d--", kCgiFetched},
        {kMultipart, "", kCgiMultipartNoLength},
        {kMultipart, thousand + "--b d--", kCgiFetched},
        {kMultipart, file + thousand + "--b d--", kCgiMultipartTooManyParts},
        {kMultipart, std::string(5242881, 'x'), kCgiMultipartTooLong},
        {"multipart/form-data; boundary=", kGood, kCgiMultipartNoBoundary},
        {"multipart/form-data; xboundary=b", kGood, kCgiMultipartNoBoundary},
        {"multipart/form-data; boundary=" + std::string(71, 'b'), kGood, kCgiMultipartNoBoundary},
    };
    for (const std::string& bad :
         {Part("filename=x", "1"), Part("name=\"\"", "1"), Part("name=a", "1\0"s), Part("name=\"a\0\""s, "1"),
          "--b d\r\nX: y\r\n\r\nz\r\n"s, "--b d\r\n\r\nz\r\n"s, "--b d\r\nX: y\r\n"s + file, "--b d\r\n"s,
          "--b d\r\nContent-Disposition: file; name=a\r\n\r\nz\r\n"s,
          Part("name=a; x=" + std::string(16384, 'x'), "1")}) {
        cases.emplace_back(kMultipart, file + bad + "--b d--\r\n" + file, kCgiMultipartBadPart);
    }
    for (const auto& [type, body, status] : cases) {
        FakeGateway gateway;
        gateway.Post(type, body);
        const Outcome outcome = Fetch(gateway);
        EXPECT_EQ(outcome.status, status) << body.substr(0, 200);
        EXPECT_TRUE(gateway.Uploads().empty());
        EXPECT_TRUE(outcome.parameters.empty() || status == kCgiFetched);
    }
}

TEST(Multipart, AFileThatCannotBeStoredTakesTheOthersWithIt) {
    FakeGateway gateway;
    wrb::test::WriteAll(gateway.home / L"Temp", "a file where the folder should be");
    gateway.Post(kMultipart, kGood);
    const Outcome outcome = Fetch(gateway);
    EXPECT_EQ(outcome.status, kCgiMultipartFileNotStored);
    EXPECT_EQ(outcome.parameters, L"");
}

TEST(Multipart, FileNamesAreCutToTheirLastComponent) {
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"..\\..\\a.ini", L"a.ini"}, {L"../a.ini", L"a.ini"}, {L"C:a.ini", L"a.ini"},
        {L"a.ini:s", L"s"},           {L"x/..", L""},          {L"a.ini. .", L"a.ini"},
        {L"a\r\nb", L"ab"},
    };
    for (const auto& [given, kept] : cases) {
        EXPECT_EQ(wrb::LastComponent(given), kept);
    }
}

}  // namespace
