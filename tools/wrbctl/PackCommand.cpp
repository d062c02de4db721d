#include <filesystem>
#include <set>
#include <stdexcept>
#include <string>
#include <system_error>
#include <vector>

#include "CabinetWriter.h"
#include "Commands.h"
#include "Failure.h"
#include "IgnoringCase.h"
#include "Text.h"

namespace wrb {

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

}  // namespace wrb
