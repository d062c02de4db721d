// Packages and results that agents upload.
#include <filesystem>

#include "Soak.h"
#include "Text.h"

namespace wrb::soak {
namespace {

// A package that the host has not taken.
void Discard(const std::wstring& package) {
    std::error_code ignored;
    std::filesystem::remove(package, ignored);
}

// How many characters of the reply pipe's name are not part of the folder's, and the answer to a good package.
constexpr struct {
    const wchar_t* command;
    std::size_t prefix;
    const wchar_t* answer;
    unsigned feedbackRecords;
} kSpywareUploads[] = {
    {L"CMDHL_SET_SPYWARELOG", 20, L"1", Packages::kSpywareSections},
    {L"CMDHL_SET_SPYWARE_BACKUP_MANIFEST", 33, L"0", 0},
};

}  // namespace

Verdict UploadFirewallLog(Worker& worker) {
    const Package& package = worker.Pick(worker.field.packages.Firewall());
    const Worker::Marks marks = worker.MarksNow();
    const Upload upload{worker.NewUid(), worker.Upload(package.path), package.records, marks};
    const Answer answer = Ask(worker.field.commands, L"CMDHL_PFW_SET_LOG",
                              {upload.uid, upload.package, worker.field.unpacked + L"\\firewall", L"1"});
    if (answer.text == L"1") {
        worker.field.ledger.Answered(upload);
    } else if (!answer.delivered) {
        Discard(upload.package);
    }
    return worker.Judge(marks, L"CMDHL_PFW_SET_LOG", answer, answer.text == L"1");
}

Verdict UploadBrokenPackage(Worker& worker) {
    const std::wstring package = worker.Upload(worker.field.packages.Broken());
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = Ask(worker.field.commands, L"CMDHL_PFW_SET_LOG",
                              {worker.NewUid(), package, worker.field.unpacked + L"\\broken", L"1"});
    if (!answer.delivered) {
        Discard(package);
    }
    return worker.Judge(marks, L"CMDHL_PFW_SET_LOG", answer, answer.text == L"0");
}

// The unpacked files stay for the scan-log service, which this program stands in for.
Verdict UploadSpyware(Worker& worker) {
    const auto& kind = worker.Pick(kSpywareUploads);
    const std::wstring package = worker.Upload(worker.field.packages.Spyware());
    const std::wstring replyPipe = NewReplyPipe();
    const std::wstring base = worker.field.unpacked + L"\\spyware";
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = Ask(worker.field.commands, kind.command, {worker.NewUid(), package, base}, replyPipe);
    if (!answer.delivered) {
        Discard(package);
        return worker.JudgeDelivery(marks, kind.command, false);
    }
    const std::filesystem::path folder = base + replyPipe.substr(kind.prefix);
    const bool unpacked = std::filesystem::exists(folder / Packages::kSpywareEntry);
    std::error_code ignored;
    std::filesystem::remove_all(folder, ignored);
    worker.field.ledger.SpywareAnswered(marks);
    worker.field.feedbackRecords += kind.feedbackRecords;
    return worker.Judge(marks, kind.command, answer, answer.text == kind.answer && unpacked);
}

Verdict ReportRestore(Worker& worker) {
    const std::wstring uid = worker.NewUid();
    const Worker::Marks marks = worker.MarksNow();
    const Answer answer = Ask(worker.field.commands, L"CMDHL_SET_SPYWARE_RESTORE_LOG", {uid, L"1", L"2"});
    if (answer.text == L"1") {
        worker.field.ledger.RestoreAnswered(uid, marks);
    }
    return worker.Judge(marks, L"CMDHL_SET_SPYWARE_RESTORE_LOG", answer, answer.text == L"1");
}

}  // namespace wrb::soak
