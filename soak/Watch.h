// Looks at the services all along: an echo every tenth of a second, memory and handles every second.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "Latencies.h"
#include "Services.h"
#include "Soak.h"

namespace wrb::soak {

// The most that a service held at any time, and what it may hold.
struct Peak {
    const char* program;
    const Service* service;
    uint64_t ceiling;  // bytes of private memory
    uint64_t bytes = 0;
    uint32_t handles = 0;
    unsigned looks = 0;
};

class Watch {
  public:
    // `progress` makes the line that is printed every few seconds.
    Watch(Field& field, std::vector<Peak> peaks, std::function<std::string()> progress);

    // To be called once the load is over. What follows does not change any more.
    void Stop();

    const Latencies& Echoes() const { return m_echoes; }
    const std::vector<Peak>& Peaks() const { return m_peaks; }

  private:
    void EchoOn(const std::stop_token& stop);
    void Echo(unsigned number);
    void LookOn(const std::stop_token& stop);
    void Look(Peak& peak);

    Field& m_field;
    std::vector<Peak> m_peaks;  // of the looking thread until Stop
    const std::function<std::string()> m_progress;
    Latencies m_echoes;
    std::jthread m_echoing;
    std::jthread m_looking;
};

}  // namespace wrb::soak
