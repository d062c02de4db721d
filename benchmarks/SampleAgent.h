// An agent as a well-filled database would hold it.
#pragma once

#include "DbAllScanRecord.h"

namespace wrb::bench {

inline constexpr wchar_t kSampleUid[] = L"11111111-2222-3333-4444-555555555555";

inline AllScanConfig SampleConfig() {
    AllScanConfig config;
    config.hasConfig = true;
    config.hasExtra = true;
    for (std::size_t scan = 0; scan < kScanTypeCount; ++scan) {
        ScanGroupValues& values = config.scans[scan];
        values.flags = 0x25A5F3B1;
        values.compressedLayer = 20;
        values.oleLayer = 3;
        values.possibleVirusCustActInActiveAct = 4;
        values.hour = 12;
        values.dayOfWeek = 7;
        values.extList = L".EXE, .COM, .SYS, .DOC, .DRV, .CMD, .XLS, .DLL, .386, .ZIP, .RAR, .7Z, .PDF, .JS";
        values.moveDir = L"C:\\ProgramData\\Calloway\\Quarantine";
        values.custAction = L"Trojan-5-4;Worm-5-4;Joke-1-1;Universe-5-4";
        config.spywareFlags[scan] = 0x01010103;
    }
    return config;
}

inline AllScanLists SampleLists() {
    AllScanLists lists;
    for (auto& scan : lists.scans) {
        scan.excludedFolder = L"C:\\Windows\\SoftwareDistribution|C:\\ProgramData\\Backup|D:\\Databases";
        scan.excludedFile = L"C:\\pagefile.sys|C:\\hiberfil.sys|D:\\Databases\\main.mdf";
        scan.excludedExt = L"MDF;LDF;NDF;BAK;VHDX";
        scan.excludeFileExtList = L"MP3;MP4;WAV;MKV";
    }
    return lists;
}

}  // namespace wrb::bench
