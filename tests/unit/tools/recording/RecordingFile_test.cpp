#include "RecordingFile.h"

#include <gtest/gtest.h>

#include "TempFolder.h"

namespace wrb {
namespace {

using test::ReadAll;
using test::WriteAll;

std::span<const uint8_t> BytesOf(const std::string& text) {
    return {reinterpret_cast<const uint8_t*>(text.data()), text.size()};
}

std::string CommandRecord(const std::string& message, const std::string& answer) {
    RecordedCommand command;
    command.messageBytes = static_cast<uint32_t>(message.size());
    command.answerBytes = static_cast<uint32_t>(answer.size());
    command.head.bytes += command.messageBytes + command.answerBytes;
    return std::string(reinterpret_cast<const char*>(&command), sizeof command) + message + answer;
}

TEST(RecordingFile, ReadsWhatWasWrittenAndSeesEveryCut) {
    const test::TempFolder folder;
    const std::wstring path = folder / L"a.wrbrec";
    {
        RecordingWriter writer;
        ASSERT_TRUE(writer.Create(path, false, {}));
        EXPECT_FALSE(RecordingWriter().Create(path, false, {}));
        ASSERT_TRUE(writer.WriteRecord(BytesOf(CommandRecord("one", "1"))));
        ASSERT_TRUE(writer.WriteCount(RecordKind::Missed, 41));
        ASSERT_TRUE(writer.WriteRecord(BytesOf(CommandRecord("two", ""))));
        ASSERT_TRUE(writer.WriteCount(RecordKind::End, 2));
    }
    const std::string bytes = ReadAll(path);
    const FileView view(path);
    const Recording whole = ReadRecording(view.Bytes());
    ASSERT_EQ(whole.commands.size(), 2u);
    EXPECT_TRUE(std::ranges::equal(whole.commands[1].message, BytesOf("two")));
    EXPECT_TRUE(std::ranges::equal(whole.commands[0].answer, BytesOf("1")));
    EXPECT_EQ(whole.missed, 41u);
    EXPECT_TRUE(whole.isWhole);
    for (std::size_t length = 0; length < bytes.size(); ++length) {
        const std::string cut = bytes.substr(0, length);
        if (length < sizeof(RecordingHead)) {
            EXPECT_THROW(ReadRecording(BytesOf(cut)), std::runtime_error);
        } else {
            EXPECT_FALSE(ReadRecording(BytesOf(cut)).isWhole) << length;
        }
    }
}

TEST(RecordingFile, RefusesWhatItDoesNotKnow) {
    const RecordingHead heads[] = {{.signature = 1}, {.version = 2}, {.headBytes = 23}, {.headBytes = 25}};
    for (const RecordingHead& head : heads) {
        EXPECT_THROW(ReadRecording({reinterpret_cast<const uint8_t*>(&head), sizeof head}), std::runtime_error);
    }
    const test::TempFolder folder;
    EXPECT_THROW(FileView(folder / L"missing"), std::runtime_error);
    WriteAll(folder / L"empty", "");
    EXPECT_TRUE(FileView(folder / L"empty").Bytes().empty());
}

// Of one record of 8 + 24 + 4 bytes: lengths that do not fill it make it no command.
TEST(RecordingFile, ARecordsPartsFillIt) {
    const std::string good = CommandRecord("ab", "cd");
    ASSERT_TRUE(ViewCommandRecord(BytesOf(good)));
    for (const std::size_t offset : {0, 4, 24, 28}) {
        for (const uint32_t value : {0u, 1u, 3u, 5u, 35u, 37u, 0x80000000u, 0xFFFFFFFFu}) {
            std::string bad = good;
            std::memcpy(bad.data() + offset, &value, sizeof value);
            EXPECT_EQ(ViewCommandRecord(BytesOf(bad)).has_value(), bad == good) << offset << " " << value;
        }
    }
}

}  // namespace
}  // namespace wrb
