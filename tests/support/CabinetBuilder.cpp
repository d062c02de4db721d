#include "CabinetBuilder.h"

#include "CabinetWriter.h"
#include "FakePipeService.h"
#include "TempFolder.h"

Bytes BuildCabinet(const std::vector<NewEntry>& entries) {
    const wrb::test::TempFolder folder;
    std::vector<wrb::CabinetSource> sources;
    for (const NewEntry& entry : entries) {
        const std::filesystem::path path = folder / std::to_wstring(sources.size());
        wrb::test::WriteAll(path, std::string(entry.data.begin(), entry.data.end()));
        sources.push_back({entry.name, path.wstring()});
    }
    const std::filesystem::path cabinet = folder / L"cabinet";
    wrb::WriteCabinet(cabinet.wstring(), sources);
    const std::string bytes = wrb::test::ReadAll(cabinet);
    return Bytes(bytes.begin(), bytes.end());
}

Bytes Noise(std::size_t size, uint32_t seed) {
    const std::string noise = wrb::test::PatternBytes(size, seed);
    return Bytes(noise.begin(), noise.end());
}
