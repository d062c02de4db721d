#include "CabinetBuilder.h"

#include "CabinetWriter.h"
#include "TempFolder.h"

std::string BuildCabinet(const std::vector<std::pair<std::string, std::string>>& entries) {
    const wrb::test::TempFolder folder;
    std::vector<wrb::CabinetSource> sources;
    for (const auto& [name, content] : entries) {
        const std::filesystem::path path = folder / std::to_wstring(sources.size());
        wrb::test::WriteAll(path, content);
        sources.push_back({name, path.wstring()});
    }
    const std::filesystem::path cabinet = folder / L"cabinet";
    wrb::WriteCabinet(cabinet.wstring(), sources);
    return wrb::test::ReadAll(cabinet);
}
