#include <gtest/gtest.h>

#include "CapturedLog.h"
#include "FakeGateway.h"
#include "MultipartForm.h"

namespace {

using namespace std::string_literals;
using wrb::test::CFakeGateway;
using wrb::test::Parameters;

constexpr char kType[] = "Multipart/Form-Data; charset=x; boundary=\"b d\"";

std::string Part(const std::string& disposition, const std::string& content) {
    return "--b d\r\nContent-Disposition: form-data; " + disposition + "\r\n\r\n" + content + "\r\n";
}

const std::string kGood = Part("name=\"a\"", "1\r\n--b dx\r\n--b") +
                          Part("name=\"file\"; filename=\"C:\\\\x\\..\\two words.ini\"", "[S]\0\r\n"s) +
                          Part("name=none; filename=\"\"", "") + "--b d--";

TEST(Multipart, ReadsFieldsAndFiles) {
    CFakeGateway gateway;
    gateway.Post(kType, "preamble\r\n" + kGood + "\r\nepilogue");
    CGetParameterImp request(false, false, gateway);
    ASSERT_EQ(request.GetInitializationResult(), kCgiFetched);
    ASSERT_EQ(gateway.Uploads().size(), 1u);
    const std::filesystem::path file = gateway.Uploads().front();
    EXPECT_EQ(Parameters(request),
              L"a=1\r\n--b dx\r\n--b|file=" + file.wstring() + L"|file.filename=two words.ini|none=|none.filename=|");
    EXPECT_EQ(wrb::test::ReadAll(file), "[S]\0\r\n"s);
    EXPECT_EQ(file.wstring(), request.FindUpload(L"FILE"));
    EXPECT_EQ(request.FindUpload(L"none"), nullptr);
}

TEST(Multipart, RefusesEveryCutAndLeavesNoFile) {
    for (std::size_t length = 1; length < kGood.size(); ++length) {
        CFakeGateway gateway;
        for (const bool announced : {true, false}) {
            gateway.Post(kType, kGood.substr(0, length), std::to_string(announced ? kGood.size() : length));
            TakeCapturedLog();
            CGetParameterImp request(false, false, gateway);
            EXPECT_EQ(request.GetInitializationResult(), announced ? kCgiMultipartCutBody : kCgiMultipartNoEnd)
                << length;
            EXPECT_EQ(Parameters(request), L"");
            EXPECT_TRUE(gateway.Uploads().empty());
            EXPECT_EQ(TakeCapturedLog().back().level, uint32_t{'E'});
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
        {kType, "--b d--", kCgiFetched},
        {kType, "--b d \t\r\nX: y\r\nCONTENT-DISPOSITION:form-data;name=a\r\n\r\n\r\n--b d--", kCgiFetched},
        {kType, "--b d\r\nContent-Disposition: form-data; name=a\r\n\r\n--b d--", kCgiFetched},
        {kType, "", kCgiMultipartNoLength},
        {kType, thousand + "--b d--", kCgiFetched},
        {kType, file + thousand + "--b d--", kCgiMultipartTooManyParts},
        {kType, std::string(5242881, 'x'), kCgiMultipartTooLong},
        {"multipart/form-data; boundary=", kGood, kCgiMultipartNoBoundary},
        {"multipart/form-data; xboundary=b", kGood, kCgiMultipartNoBoundary},
        {"multipart/form-data; boundary=" + std::string(71, 'b'), kGood, kCgiMultipartNoBoundary},
    };
    for (const std::string& bad :
         {Part("filename=x", "1"), Part("name=\"\"", "1"), Part("name=a", "1\0"s), Part("name=\"a\0\""s, "1"),
          "--b d\r\nX: y\r\n\r\nz\r\n"s, "--b d\r\n\r\nz\r\n"s, "--b d\r\nX: y\r\n"s + file, "--b d\r\n"s,
          "--b d\r\nContent-Disposition: file; name=a\r\n\r\nz\r\n"s,
          Part("name=a; x=" + std::string(16384, 'x'), "1")}) {
        cases.emplace_back(kType, file + bad + "--b d--\r\n" + file, kCgiMultipartBadPart);
    }
    for (const auto& [type, body, status] : cases) {
        CFakeGateway gateway;
        gateway.Post(type, body);
        CGetParameterImp request(false, false, gateway);
        EXPECT_EQ(request.GetInitializationResult(), status) << body.substr(0, 200);
        EXPECT_TRUE(gateway.Uploads().empty());
        EXPECT_TRUE(Parameters(request).empty() || status == kCgiFetched);
    }
}

TEST(Multipart, AFileThatCannotBeStoredTakesTheOthersWithIt) {
    CFakeGateway gateway;
    wrb::test::WriteAll(gateway.Home() / L"Temp", "a file where the folder should be");
    gateway.Post(kType, kGood);
    CGetParameterImp request(false, false, gateway);
    EXPECT_EQ(request.GetInitializationResult(), kCgiMultipartFileNotStored);
    EXPECT_EQ(Parameters(request), L"");
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
