#include "stations.h"

std::map<std::string, Stations::Station> Stations::All() const {
    const std::lock_guard<std::mutex> guard(mutex_);
    return stations_;
}

bool Stations::SetLimit(const std::string& station, short celsius) {
    const std::lock_guard<std::mutex> guard(mutex_);
    const auto found = stations_.find(station);
    if (found == stations_.end()) {
        return false;
    }
    found->second.limit = celsius;
    return true;
}

Weather::Readings* StationManager::readAll() {
    Weather::Readings_var readings = new Weather::Readings;
    for (const auto& [name, station] : stations_.All()) {
        const CORBA::ULong last = readings->length();
        readings->length(last + 1);
        readings[last].station = name.c_str();
        readings[last].celsius = station.celsius;
    }
    return readings._retn();
}

void StationManager::setLimit(const char* station, CORBA::Short celsius) {
    if (!stations_.SetLimit(station, celsius)) {
        throw Weather::Refused("there is no such station");
    }
}

CORBA::Object* StationManagerFactory::CreateMgr(PortableServer::POA* poa) {
    const PortableServer::ServantBase_var servant = new StationManager(stations_);
    const PortableServer::ObjectId_var id = poa->activate_object(servant.in());
    return poa->id_to_reference(id.in());
}
