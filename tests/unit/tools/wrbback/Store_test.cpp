#include "Store.h"

#include <gtest/gtest.h>

#include <atomic>
#include <functional>

#include "OnThreads.h"
#include "TempFolder.h"
#include "Text.h"

namespace wrb {
namespace {

using test::CTempFolder;
using test::ReadAll;
using test::WriteAll;

std::string WhyNot(const std::wstring& path) {
    try {
        const auto db = OpenStore(path);
        VerifyStore(*db, path);
        return {};
    } catch (const CSqliteError& error) {
        return error.what();
    }
}

TEST(Store, AFileThatCannotBeUsedIsNamedWithTheReason) {
    const CTempFolder folder;
    const std::wstring path = (folder / L"b\xfcro.db").wstring();
    const struct {
        const char* what;
        std::function<void()> prepare;
        const char* reason;
    } kCases[] = {
        {"missing", [] {}, "cannot be opened; make it with: wrbback seed"},
        {"empty", [&] { WriteAll(path, ""); }, "is empty; fill it with"},
        {"text", [&] { WriteAll(path, std::string(5000, 'x')); }, "is not a database"},
        {"another program's",
         [&] { CSqliteDb(path, CSqliteDb::Open::kCreate).Execute("CREATE TABLE theirs (x); PRAGMA user_version = 1"); },
         "is a database of another program"},
        {"a newer version's", [&] { CreateStore(path)->Execute("PRAGMA user_version = 99"); },
         "has version 99, this program knows 2"},
        {"damaged",
         [&] {
             CreateStore(path)->Execute("PRAGMA journal_mode = DELETE");
             std::string bytes = ReadAll(path);
             // The page size in the header says where the second page starts.
             const std::size_t page = static_cast<unsigned char>(bytes[16]) * 256u;
             std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(page), bytes.end(), '\x55');
             WriteAll(path, bytes);
         },
         "is damaged"},
    };
    for (const auto& [what, prepare, reason] : kCases) {
        std::filesystem::remove(path);
        prepare();
        const std::string why = WhyNot(path);
        EXPECT_TRUE(why.starts_with(WideToUtf8(path) + ": ")) << what << ": " << why;
        EXPECT_NE(why.find(reason), std::string::npos) << what << ": " << why;
    }
    std::filesystem::remove(path);
    CreateStore(path);
    EXPECT_EQ(WhyNot(path), "");
}

TEST(Store, ThePoolLendsEachConnectionToOneThreadAndReadersGoOnWhileAWriterIsInTheMiddle) {
    const CTempFolder folder;
    const std::wstring path = (folder / L"agents.db").wstring();
    const auto writer = CreateStore(path);
    CSqliteTransaction transaction(*writer);
    writer->Execute("INSERT INTO agent (uid) VALUES ('u')");
    CStorePool pool(path, 2);
    std::atomic<int> out{0};
    test::OnThreads(6, [&](unsigned) {
        for (int n = 0; n < 50; ++n) {
            const auto lease = pool.Lend();
            EXPECT_LE(++out, 2);
            EXPECT_EQ(lease.Db().NumberOf("SELECT count(*) FROM agent"), 0);
            --out;
        }
    });
    transaction.Commit();
    EXPECT_EQ(pool.Lend().Db().NumberOf("SELECT count(*) FROM agent"), 1);
}

}  // namespace
}  // namespace wrb
