// An ORB in the test's own process, with interceptors that the test scripts, and callers from here and from
// another process.
#pragma once

#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "tao/ORBInitializer_Registry.h"
#include "tao/PI_Server/PI_Server.h"
#include "target_servant.h"

namespace qv_test {

using Strings = std::vector<std::string>;

/// What happened, in order. Any thread may add.
class Events {
  public:
    void Add(const std::string& event);
    Strings All() const;
    bool Contains(const std::string& event) const;
    void Clear();

  private:
    mutable std::mutex m_lock;
    Strings m_events;
};

/// An interceptor that notes "NAME.point" for each point that is called, and then does what the test says.
class Probe : public virtual PortableInterceptor::ServerRequestInterceptor {
  public:
    using Info = PortableInterceptor::ServerRequestInfo_ptr;
    using Action = std::function<void(Info)>;

    Probe(std::string name, Events& events) : m_name(std::move(name)), m_events(events) { ++s_alive; }

    Action contexts;
    Action request;
    Action reply;
    Action exception;
    Action other;

    char* name() override { return CORBA::string_dup(m_name.c_str()); }
    void destroy() override { m_events.Add(m_name + ".destroy"); }
    void receive_request_service_contexts(Info info) override { Do("contexts", contexts, info); }
    void receive_request(Info info) override { Do("request", request, info); }
    void send_reply(Info info) override { Do("reply", reply, info); }
    void send_exception(Info info) override { Do("exception", exception, info); }
    void send_other(Info info) override { Do("other", other, info); }

    /// How many probes there are.
    static int Alive() { return s_alive; }

  protected:
    ~Probe() override { --s_alive; }

  private:
    void Do(const char* point, const Action& action, Info info);

    const std::string m_name;
    Events& m_events;
    static std::atomic<int> s_alive;
};

/// What the process's one ORB initializer does for the next ORB. Initializers stay registered for good, hence
/// this indirection.
struct InitializerScript {
    using Action = std::function<void(PortableInterceptor::ORBInitInfo_ptr)>;
    Action pre_init;
    Action post_init;
};
InitializerScript& initializer_script();

/// Registers the initializer that follows the script; once per process.
void RegisterScriptedInitializer();

/// Calls CORBA::ORB_init with these arguments behind the program's name. What is left of them is stored in
/// `rest` where that is given.
CORBA::ORB_ptr InitOrb(const Strings& args, Strings* rest = nullptr, const char* id = "");

/// An ORB with the interceptors "A" and "B", in this order, and two objects of Seam::Target.
class SeamServer {
  public:
    struct Options {
        Strings args;
        int port = 0;      ///< 0: a free one
        int ssl_port = 0;  ///< 0: none is asked for
        bool intercept = true;
        unsigned slots = 0;  ///< so many slots are allocated
        unsigned servant_threads = 0;
    };

    SeamServer() : SeamServer(Options{}) {}
    explicit SeamServer(const Options& options);
    ~SeamServer();
    SeamServer(const SeamServer&) = delete;
    SeamServer& operator=(const SeamServer&) = delete;

    CORBA::ORB_ptr orb() { return m_orb.in(); }
    PortableServer::POA_ptr root() { return m_root.in(); }
    int port() const { return m_port; }
    std::string Ior(CORBA::Object_ptr object);
    std::string ior() { return Ior(target.in()); }

    /// A reference to `object` as a remote client has it, from an object of any POA.
    Seam::Target_ptr Activate(PortableServer::POA_ptr poa, PortableServer::Servant servant);

    /// The outcome of a call from another process, or from this one.
    std::string Remote(const std::string& operation, const std::string& argument = "");
    std::string Collocated(const std::string& operation, const std::string& argument = "");

    Events events;
    Probe* a = nullptr;
    Probe* b = nullptr;
    TargetServant servant;
    Seam::Target_var target;
    TargetServant elsewhere{"elsewhere"};
    Seam::Target_var there;                ///< the object of `elsewhere`
    PortableInterceptor::SlotId slot = 0;  ///< the first allocated one

  private:
    void RegisterInterceptors(const Options& options, PortableInterceptor::ORBInitInfo_ptr info);

    const int m_port;
    CORBA::ORB_var m_orb;
    PortableServer::POA_var m_root;
};

/// The path of the other process's program.
std::string PeerProgram();
/// Runs it with a "call" on `ior`.
std::string RemoteCall(const std::string& ior, const std::string& operation,
                       const std::string& argument = "");

}  // namespace qv_test
