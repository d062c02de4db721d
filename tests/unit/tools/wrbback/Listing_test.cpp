// Lists for people: what is found, in which order, and which part of it.
#include "Listing.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "CmdProtocol.h"
#include "Store.h"

namespace wrb {
namespace {

TEST(Listing, FindsOrdersAndTurnsPages) {
    const auto db = CreateStore(L":memory:");
    db->Execute(
        "INSERT INTO agent (uid, computer, ip) VALUES ('u1', 'Beta_1', '10.0.0.2'), ('u2', 'alpha', '10.0.0.3'),"
        "('u3', 'gamma%', '10.0.0.1');"
        "INSERT INTO scan (uid, type, flags) VALUES ('u1', 0, 5), ('u2', 0, 5), ('u2', 1, 6);"
        "INSERT INTO restore_session (uid, position, session) VALUES ('u2', 1, 'b' || char(9) || 'c'), ('u2', 0, 'a');"
        "INSERT INTO event (RECEIVED, SERVICE, NAME, FIELDS) VALUES ('t', 's', 'first', ''), ('t', 's', 'second', '')");
    const struct {
        const wchar_t* request;  // a blank for a TAB
        const wchar_t* answer;   // the total, the columns, and of each row the second column, or the only one
    } cases[] = {
        {L"agents  0 0 0 50", L"3 6 Beta_1 alpha gamma%"},
        {L"agents  2 1 0 50", L"3 6 gamma% alpha Beta_1"},
        {L"agents  3 0 1 1", L"3 6 Beta_1"},
        {L"agents BETA 0 0 0 50", L"1 6 Beta_1"},
        {L"agents 10.0.0. 99 0 2 50", L"3 6 gamma%"},
        {L"agents % 0 0 0 50", L"1 6 gamma%"},
        {L"agents a_ 0 0 0 50", L"1 6 Beta_1"},
        {L"agents ' 0 0 0 50", L"0 6"},
        {L"restore_session U2 0 0 0 50", L"2 1 a b\\tc"},
        {L"event second 0 0 0 50", L"1 5 t"},
        {L"agent u 0 0 0 50", L"0 23"},
        {L"scan.flags 0 0 0 0 50", L"2 2 2"},
        {L"sqlite_master  0 0 0 50", L"-"},
        {L"", L"-"},
    };
    for (const auto& test : cases) {
        std::wstring text = test.request;
        std::ranges::replace(text, L' ', L'\t');
        CCmdProtocol request(text.c_str());
        const std::optional<std::wstring> answer = ListRows(*db, request);
        std::wstring shown = L"-";
        if (answer) {
            CCmdProtocol fields(answer->c_str());
            std::wstring field;
            uint32_t columns = 0;
            fields >> shown >> columns;
            shown += L" " + std::to_wstring(columns);
            for (uint32_t i = 0; !fields.AtEnd(); ++i) {
                fields >> field;
                shown += columns == 1 || i % columns == 1 ? L" " + field : L"";
            }
        }
        EXPECT_EQ(shown, test.answer) << testing::PrintToString(test.request);
    }
}

}  // namespace
}  // namespace wrb
