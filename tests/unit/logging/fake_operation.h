#pragma once

#include <functional>
#include <string>
#include <vector>

#include "tests/unit/request/fake_server_request_info.h"

namespace qv_test {

/// A request whose every part the test decides. A part that wasn't set raises CORBA::NO_RESOURCES, except for
/// the POAs, which are the root's alone.
class FakeOperation : public FakeServerRequestInfo {
  public:
    Dynamic::ParameterList parameters;
    std::function<void()> argumentsRaise;
    CORBA::Any returned;  ///< of kind tk_null: no result
    std::function<void()> resultRaises;
    PortableInterceptor::ReplyStatus status = PortableInterceptor::SUCCESSFUL;
    CORBA::Any exception;
    std::function<void()> exceptionRaises;
    std::vector<std::string> poas = {"RootPOA"};
    std::function<void()> adapterRaises;

    explicit FakeOperation(const char* name) { operationName = name; }

    /// Adds a parameter of type string.
    void AddText(const char* text, CORBA::ParameterMode mode = CORBA::PARAM_IN) {
        Add(mode).argument <<= text;
    }
    void AddLong(CORBA::Long number, CORBA::ParameterMode mode = CORBA::PARAM_IN) {
        Add(mode).argument <<= number;
    }
    Dynamic::Parameter& Add(CORBA::ParameterMode mode = CORBA::PARAM_IN) {
        const CORBA::ULong place = parameters.length();
        parameters.length(place + 1);
        parameters[place].mode = mode;
        return parameters[place];
    }
    /// Puts the object into the POA tree of a client.
    void CalledBy(const std::string& user, const std::string& address) {
        poas = {"RootPOA", "M4400",
                "<USERNAME_TAG>" + user + "</USERNAME_TAG><IPANDPORT_TAG>" + address + "</IPANDPORT_TAG>",
                "session"};
    }

    Dynamic::ParameterList* arguments() override {
        Raise(argumentsRaise);
        return new Dynamic::ParameterList(parameters);
    }
    CORBA::Any* result() override {
        Raise(resultRaises);
        return new CORBA::Any(returned);
    }
    PortableInterceptor::ReplyStatus reply_status() override { return status; }
    CORBA::Any* sending_exception() override {
        Raise(exceptionRaises);
        return new CORBA::Any(exception);
    }
    CORBA::StringSeq* adapter_name() override {
        Raise(adapterRaises);
        auto* const names = new CORBA::StringSeq;
        names->length(static_cast<CORBA::ULong>(poas.size()));
        for (CORBA::ULong i = 0; i < names->length(); ++i) {
            (*names)[i] = CORBA::string_dup(poas[i].c_str());
        }
        return names;
    }

  private:
    static void Raise(const std::function<void()>& raise) {
        if (raise) {
            raise();
        }
    }
};

}  // namespace qv_test
