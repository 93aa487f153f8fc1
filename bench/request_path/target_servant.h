// The servant of all servers. Each includes the skeletons of its own ORB ahead of this header.
#pragma once

#include <sys/resource.h>

#include <cstdio>
#include <fstream>
#include <string>

class TargetServant : public POA_bench::Target {
  public:
    explicit TargetServant(CORBA::ORB_ptr orb) : orb_(CORBA::ORB::_duplicate(orb)) {}

    CORBA::Long query(const char* name, CORBA::Long number, const bench::Filters&, const CORBA::Any&,
                      CORBA::String_out answer) override {
        answer = CORBA::string_dup(name);
        return number + 1;
    }
    void prepare(CORBA::ULong count) override {
        elements_.length(count);
        for (CORBA::ULong i = 0; i < count; ++i) {
            Fill(elements_[i], i);
        }
    }
    /// The reply lends the elements, so that making and copying them is no part of what is measured.
    bench::Elements* list() override {
        return new bench::Elements(elements_.length(), elements_.length(), elements_.get_buffer(), false);
    }
    CORBA::Double cpu_seconds() override {
        rusage usage{};
        getrusage(RUSAGE_SELF, &usage);
        return Seconds(usage.ru_utime) + Seconds(usage.ru_stime);
    }
    void stop() override { orb_->shutdown(false); }

  private:
    static double Seconds(const timeval& time) {
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
    }

    static void Set(bench::NameAndValue& pair, const char* name, const std::string& value) {
        pair.name = CORBA::string_dup(name);
        pair.value = CORBA::string_dup(value.c_str());
    }
    static void Fill(bench::Element& element, CORBA::ULong number) {
        const std::string digits = std::to_string(number);
        element.name.length(2);
        Set(element.name[0], "EMS", "Zorvex/KLV");
        Set(element.name[1], "ManagedElement", "NE-" + digits);
        element.user_label = CORBA::string_dup(("Exchange-" + digits).c_str());
        element.native_name = CORBA::string_dup(("EXC" + digits).c_str());
        element.owner = CORBA::string_dup("Metro North");
        element.in_sync = number % 20 != 0;
        element.state = static_cast<CORBA::Long>(number % 3);
        element.additional_info.length(3);
        Set(element.additional_info[0], "Rack", std::to_string(number % 48));
        Set(element.additional_info[1], "SerialNumber", "5C0FE1" + digits);
        Set(element.additional_info[2], "InstalledOn", "2019-11-14");
    }

    CORBA::ORB_var orb_;
    bench::Elements elements_;
};

/// Activates the servant and writes its reference where the client looks for it, all at once.
inline void Publish(CORBA::ORB_ptr orb, PortableServer::POA_ptr poa, TargetServant& servant,
                    const char* file) {
    PortableServer::ObjectId_var id = poa->activate_object(&servant);
    CORBA::Object_var reference = poa->id_to_reference(id);
    CORBA::String_var text = orb->object_to_string(reference);
    const std::string draft = std::string(file) + ".new";
    std::ofstream(draft) << text.in() << '\n';
    std::rename(draft.c_str(), file);
}

/// The whole of a server on an ORB alone: publishes the servant and serves until a client says stop.
inline void ServeUntilStopped(CORBA::ORB_ptr orb, const char* file) {
    CORBA::Object_var object = orb->resolve_initial_references("RootPOA");
    PortableServer::POA_var poa = PortableServer::POA::_narrow(object);
    TargetServant servant(orb);
    Publish(orb, poa, servant, file);
    PortableServer::POAManager_var manager = poa->the_POAManager();
    manager->activate();
    orb->run();
    orb->destroy();
}
