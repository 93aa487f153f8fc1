// An OSS of the weather EMS, for trying the agents of the tutorial. It is no agent: it links the ORB alone.
#include <orbsvcs/CosNamingC.h>

#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "event_watch.h"
#include "weatherC.h"

namespace {

using Words = std::vector<std::string>;

constexpr const char* kUsage =
    "weather_oss REFERENCE_FILE COMMAND            asks a station manager\n"
    "weather_oss HOST:PORT/EMS USER COMMAND        logs in to the EMS that a naming service knows; the\n"
    "                                              password is the first line of USER.password\n"
    "commands: read | limit STATION CELSIUS | watch COUNT (of events)\n";

std::string FirstLineOf(const std::string& file) {
    std::ifstream stream(file);
    std::string line;
    std::getline(stream, line);
    return line;
}

/// Finds the session factory under the name that an agent registers it by.
Weather::SessionFactory_ptr FindFactory(CORBA::ORB_ptr orb, const std::string& naming,
                                        const std::string& ems) {
    const CORBA::Object_var root =
        orb->string_to_object(("corbaloc:iiop:" + naming + "/NameService").c_str());
    const CosNaming::NamingContext_var context = CosNaming::NamingContext::_narrow(root.in());
    const char* const parts[][2] = {{"TMF_MTNM", "Class"},
                                    {"ZORVEX", "Vendor"},
                                    {ems.c_str(), "EmsInstance"},
                                    {"2.0", "Version"},
                                    {ems.c_str(), "EmsSessionFactory_I"}};
    CosNaming::Name name;
    for (const auto& part : parts) {
        const CORBA::ULong last = name.length();
        name.length(last + 1);
        name[last].id = part[0];
        name[last].kind = part[1];
    }
    const CORBA::Object_var factory = context->resolve(name);
    return Weather::SessionFactory::_narrow(factory.in());
}

void Ask(Weather::StationManager_ptr stations, const Words& command) {
    if (command.size() == 3 && command[0] == "limit") {
        stations->setLimit(command[1].c_str(), static_cast<CORBA::Short>(std::stoi(command[2])));
        std::cout << "done" << std::endl;
        return;
    }
    Weather::Readings_var readings = stations->readAll();
    for (CORBA::ULong i = 0; i < readings->length(); ++i) {
        std::cout << readings[i].station.in() << "  " << readings[i].celsius << " C" << std::endl;
    }
}

void Work(CORBA::ORB_ptr orb, Weather::Session_ptr session, const Words& command) {
    if (command[0] == "watch") {
        const CosNotifyChannelAdmin::EventChannel_var channel = session->getEventChannel();
        WatchEvents(orb, channel.in(), std::stoul(command.at(1)));
        return;
    }
    const Weather::Manager_var manager = session->getManager("Station");
    const Weather::StationManager_var stations = Weather::StationManager::_narrow(manager.in());
    Ask(stations.in(), command);
}

void Run(CORBA::ORB_ptr orb, const Words& words) {
    const std::string& where = words[0];
    const std::size_t slash = where.find('/');
    if (slash == std::string::npos) {
        const CORBA::Object_var object = orb->string_to_object(FirstLineOf(where).c_str());
        const Weather::StationManager_var stations = Weather::StationManager::_narrow(object.in());
        Ask(stations.in(), Words(words.begin() + 1, words.end()));
        return;
    }
    const Weather::SessionFactory_var factory =
        FindFactory(orb, where.substr(0, slash), where.substr(slash + 1));
    const std::string password = FirstLineOf(words[1] + ".password");
    const Weather::Session_var session = factory->getEmsSession(words[1].c_str(), password.c_str());
    Work(orb, session.in(), Words(words.begin() + 2, words.end()));
    if (words[2] != "watch") {  // whose ORB has been shut down
        session->endSession();
    }
}

}  // namespace

int main(int argc, char** argv) {
    const Words words(argv + 1, argv + argc);
    if (words.size() < 2 || (words[0].find('/') != std::string::npos && words.size() < 3)) {
        std::cerr << kUsage;
        return 2;
    }
    try {
        const CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
        Run(orb.in(), words);
        std::cout.flush();
        std::quick_exit(0);
    } catch (const Weather::Refused& e) {
        std::cerr << "weather_oss: refused: " << e.reason.in() << std::endl;
    } catch (const CosNaming::NamingContext::NotFound&) {
        std::cerr << "weather_oss: the naming service knows no such EMS" << std::endl;
    } catch (const CORBA::Exception& e) {
        std::cerr << "weather_oss: " << e._name() << std::endl;
    }
    std::quick_exit(1);
}
