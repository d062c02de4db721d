// A profile in memory that counts and notes what the cache asks of it, and fails on demand.
#pragma once

#include <atomic>
#include <map>
#include <string>
#include <vector>

#include "ProfileAccess.h"

class FakeProfile : public wrb::IProfileAccess {
  public:
    bool FileExists(const char*) override { return true; }

    uint32_t ReadInt(const char* section, const char* key, int32_t defaultValue, const char* path) override {
        const std::string text = ReadString(section, key, "", path);
        return text.empty() ? static_cast<uint32_t>(defaultValue) : static_cast<uint32_t>(std::stol(text));
    }

    std::string ReadString(const char* section, const char* key, const char* defaultText, const char* path) override {
        ++reads;
        lastPath = path;
        const auto found = values.find(std::string(section) + "/" + key);
        return found != values.end() ? found->second : defaultText;
    }

    // Its keys in the order of the alphabet; nothing when one has an empty name.
    std::optional<std::string> ReadSection(const char* section, const char*) override {
        ++reads;
        std::string lines;
        const std::string prefix = std::string(section) + "/";
        for (const auto& [key, value] : values) {
            if (key.starts_with(prefix)) {
                lines += key.substr(prefix.size()) + "=" + value + "\n";
            }
        }
        return lines.starts_with('=') ? std::nullopt : std::optional(lines);
    }

    int WriteString(const char* section, const char* key, const char* value, const char*, uint32_t& error) override {
        ++writeAttempts;
        if (failingWrites > 0) {
            --failingWrites;
            error = static_cast<uint32_t>(writeAttempts);
            return 0;
        }
        values[std::string(section) + "/" + key] = value;
        return 1;
    }

    void Pause(uint32_t milliseconds) override { pauses.push_back(milliseconds); }

    std::map<std::string, std::string> values;
    int failingWrites = 0;
    int writeAttempts = 0;
    std::atomic<int> reads{0};
    std::string lastPath;
    std::vector<uint32_t> pauses;
};
