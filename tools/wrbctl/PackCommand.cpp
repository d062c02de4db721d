#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "CabinetWriter.h"
#include "Failure.h"
#include "IgnoringCase.h"
#include "Subcommands.h"
#include "Text.h"

namespace wrb {
namespace {

constexpr char kExamples[] = R"(Example:
  wrbctl pack upload.cab fw1.log fw2.log

Exit codes: 0 done, 1 cannot make the package, 2 wrong command line or no such file.
)";

struct PackOptions {
    std::string package;
    std::vector<std::string> files;
};

int RunPack(const PackOptions& options) {
    std::vector<CabinetSource> sources;
    std::set<std::wstring, LessIgnoringCase> names;
    for (const std::string& file : options.files) {
        const std::filesystem::path path(Utf8ToWide(file));
        std::error_code ignored;
        if (!std::filesystem::is_regular_file(path, ignored)) {
            return Fail(kExitUsage, "there is no file " + file);
        }
        if (!names.insert(path.filename().wstring()).second) {
            return Fail(kExitUsage, "two files have the name " + WideToUtf8(path.filename().wstring()));
        }
        sources.push_back({WideToUtf8(path.filename().wstring()), path.wstring()});
    }
    try {
        WriteCabinet(Utf8ToWide(options.package), sources);
    } catch (const std::runtime_error& error) {
        return Fail(kExitFailed, options.package + ": " + error.what());
    }
    return kExitOk;
}

}  // namespace

void AddPack(CLI::App& app, Run& run) {
    const auto options = std::make_shared<PackOptions>();
    CLI::App* const pack =
        AddSubcommand(app, "pack", "Make a package (a cabinet) as agents upload it", kExamples, options, RunPack, run);
    pack->add_option("package", options->package, "File to make; an existing one is replaced")->required();
    pack->add_option("files", options->files, "Files to pack, under their names without folders")->required();
}

}  // namespace wrb
