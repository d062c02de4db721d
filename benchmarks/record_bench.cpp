#include <cstring>
#include <string>
#include <vector>

#include "Allocations.h"
#include "DbAllScanRecord.h"
#include "Ratio.h"
#include "SampleAgent.h"
#include "Serializer.h"

namespace wrb::bench {
namespace {

void Encode(benchmark::State& state) {
    const AllScanConfig record = SampleConfig();
    CSerializer serializer;
    const AllocationCounter counter(state);
    for (auto _ : state) {
        serializer.Reset();
        record.Serialize(serializer);
        benchmark::DoNotOptimize(serializer.Data());
    }
}

void Decode(benchmark::State& state) {
    const AllScanConfig record = SampleConfig();
    CSerializer encoded;
    record.Serialize(encoded);
    const std::vector<uint8_t> bytes(encoded.Data(), encoded.Data() + encoded.GetSize());
    CSerializer serializer;
    AllScanConfig decoded;
    const AllocationCounter counter(state);
    for (auto _ : state) {
        serializer.Load(bytes.data(), static_cast<uint32_t>(bytes.size()));
        decoded.Deserialize(serializer);
        benchmark::DoNotOptimize(decoded);
    }
}

// The bytes of one field in the record.
struct Field {
    void* bytes;
    std::size_t size;
};

std::vector<Field> FieldsOf(AllScanConfig& record) {
    std::vector<Field> fields = {{&record.hasConfig, 1}, {&record.hasExtra, 1}};
    const auto number = [&](uint32_t& value) { fields.push_back({&value, sizeof value}); };
    const auto text = [&](std::wstring& value) {
        fields.push_back({value.data(), (value.size() + 1) * sizeof(wchar_t)});
    };
    for (std::size_t scan = 0; scan < kScanTypeCount; ++scan) {
        ScanGroupValues& values = record.scans[scan];
        for (const ScanNumber member : FindScanGroup(static_cast<ScanType>(scan), ScanGroupKind::Main).numbers) {
            number(values.*member);
        }
        number(record.spywareFlags[scan]);
        text(values.extList);
        text(values.moveDir);
        text(values.custAction);
    }
    return fields;
}

void CopyOut(benchmark::State& state) {
    AllScanConfig record = SampleConfig();
    const std::vector<Field> fields = FieldsOf(record);
    std::vector<uint8_t> buffer(65536);
    for (auto _ : state) {
        uint8_t* at = buffer.data();
        for (const Field& field : fields) {
            const uint32_t size = static_cast<uint32_t>(field.size);
            std::memcpy(at, &size, sizeof size);
            std::memcpy(at + sizeof size, field.bytes, field.size);
            at += sizeof size + field.size;
        }
        benchmark::DoNotOptimize(at);
        benchmark::ClobberMemory();
    }
}

void CopyIn(benchmark::State& state) {
    AllScanConfig record = SampleConfig();
    const std::vector<Field> fields = FieldsOf(record);
    std::vector<uint8_t> buffer(65536, 1);
    for (auto _ : state) {
        const uint8_t* at = buffer.data();
        for (const Field& field : fields) {
            uint32_t size = 0;
            std::memcpy(&size, at, sizeof size);
            benchmark::DoNotOptimize(size);
            std::memcpy(field.bytes, at + sizeof size, field.size);
            at += sizeof size + field.size;
        }
        benchmark::DoNotOptimize(record);
        benchmark::ClobberMemory();
    }
}

}  // namespace

void AddRecordBenchmarks() {
    AddRatio("all-scan record, encode", Encode, "memcpy of the same fields", CopyOut, Goal::AtMost, 3);
    AddRatio("all-scan record, decode", Decode, "memcpy of the fields back", CopyIn, Goal::AtMost, 3);
}

}  // namespace wrb::bench
