#pragma once

#include <map>
#include <mutex>
#include <string>

#include "weatherS.h"

/// The stations, what they measure and their limits. Thread-safe.
class Stations {
  public:
    struct Station {
        short celsius;
        short limit;
    };

    std::map<std::string, Station> All() const;

    /// False for an unknown station.
    bool SetLimit(const std::string& station, short celsius);

  private:
    mutable std::mutex mutex_;
    std::map<std::string, Station> stations_{{"harbour", {11, -20}}, {"ridge", {-4, -20}}};
};

/// The servant: the ORB's threads call it, several at once.
class StationManager : public POA_Weather::StationManager {
  public:
    /// `stations` lives as long as the process.
    explicit StationManager(Stations& stations) : stations_(stations) {}

    Weather::Readings* readAll() override;
    void setLimit(const char* station, CORBA::Short celsius) override;

  private:
    Stations& stations_;
};
