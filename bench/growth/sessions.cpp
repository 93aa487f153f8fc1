// Many users who are logged in at once; one user on one connection has one session.
// Usage: bench_sessions FACTORY_FILE USER PASSWORD
// The users are USER0, USER1 and so on, with one password.
// Each line of the standard input names a number of sessions; the program logs in until it has so many, calls
// 200 of them, and prints one line of JSON. It ends with its input, without logging out.
#include <tao/PortableServer/PortableServer.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <string>
#include <vector>

#include "bench/growth/timings.h"
#include "emsSessionFactoryC.h"
#include "nmsSessionS.h"

namespace {

constexpr std::size_t kPings = 200;

class Client : public POA_nmsSession::NmsSession_I {
  public:
    session::Session_I_ptr associatedSession() override { return session::Session_I::_nil(); }
    void ping() override {}
    void endSession() override {}
    void eventLossOccurred(const char*, const char*) override {}
    void eventLossCleared(const char*) override {}
};

class Oss {
  public:
    Oss(CORBA::ORB_ptr orb, const std::string& factory_reference) {
        CORBA::Object_var object = orb->string_to_object(factory_reference.c_str());
        m_factory = emsSessionFactory::EmsSessionFactory_I::_narrow(object.in());
        object = orb->resolve_initial_references("RootPOA");
        const PortableServer::POA_var root = PortableServer::POA::_narrow(object.in());
        const PortableServer::POAManager_var manager = root->the_POAManager();
        manager->activate();
        m_client = m_servant._this();
    }

    void LogInUntil(std::size_t count, const std::string& users, const char* password) {
        qv_bench::Timings log_ins;
        while (m_sessions.size() < count) {
            emsSession::EmsSession_I_var session;
            const std::string user = users + std::to_string(m_sessions.size());
            log_ins.Take(
                [&] { m_factory->getEmsSession(user.c_str(), password, m_client.in(), session.out()); });
            m_sessions.push_back(session);
        }
        qv_bench::Timings pings;
        for (std::size_t i = 0; i < kPings; ++i) {
            // Others each time, spread over all.
            pings.Take([&] { m_sessions[i * 7919 % m_sessions.size()]->ping(); });
        }
        std::printf("{\"login_p50_us\": %.1f, \"login_p99_us\": %.1f, \"ping_p50_us\": %.1f}\n",
                    log_ins.At(0.50), log_ins.At(0.99), pings.At(0.50));
        std::fflush(stdout);
    }

  private:
    emsSessionFactory::EmsSessionFactory_I_var m_factory;
    Client m_servant;
    nmsSession::NmsSession_I_var m_client;
    std::vector<emsSession::EmsSession_I_var> m_sessions;
};

int Run(CORBA::ORB_ptr orb, char** argv) {
    std::string reference;
    std::getline(std::ifstream(argv[1]) >> std::ws, reference);
    Oss oss(orb, reference);
    for (std::string line; std::getline(std::cin, line);) {
        oss.LogInUntil(std::strtoul(line.c_str(), nullptr, 10), argv[2], argv[3]);
    }
    std::_Exit(0);  // the servant may still be called
}

}  // namespace

int main(int argc, char** argv) {
    CORBA::ORB_var orb = CORBA::ORB_init(argc, argv);
    if (argc != 4) {
        std::cerr << "usage: bench_sessions FACTORY_FILE USER PASSWORD\n";
        return 2;
    }
    try {
        return Run(orb.in(), argv);
    } catch (const globaldefs::ProcessingFailureException& refused) {
        std::cerr << "bench_sessions: refused: " << refused.errorReason.in() << '\n';
    } catch (const CORBA::Exception& exception) {
        std::cerr << "bench_sessions: " << exception._name() << '\n';
    }
    return 1;
}
