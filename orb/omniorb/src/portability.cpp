#include "orb/portability.h"

#include <tao/DynamicAny/DynAnyFactory.h>

#include <cstring>
#include <mutex>
#include <set>

#include "diagnostics.h"
#include "orb_state.h"
#include "upcall_info.h"

namespace qv_orb {
namespace {

void WriteToStandardError(const std::string& line) {
    const std::string text = line + "\n";
    std::fwrite(text.data(), 1, text.size(), stderr);
}

DiagnosticSink g_sink = WriteToStandardError;

const char* Completion(CORBA::CompletionStatus status) {
    switch (status) {
        case CORBA::COMPLETED_YES:
            return "YES";
        case CORBA::COMPLETED_NO:
            return "NO";
        default:
            return "MAYBE";
    }
}

std::string SystemExceptionText(const CORBA::SystemException& ex, const char* id) {
    char minor[16];
    std::snprintf(minor, sizeof minor, "0x%08x", static_cast<unsigned>(ex.minor()));
    std::string text = std::string("system exception, ID '") + id + "', minor code " + minor;
    const char* meaning = ex.NP_minorString();
    if (meaning != nullptr && *meaning != '\0') {
        text.append(" (").append(meaning).append(")");
    }
    return text + ", completed = " + Completion(ex.completed());
}

}  // namespace

std::string ExceptionText(const CORBA::Exception& ex) {
    const char* id = ex._rep_id();
    const auto* system = CORBA::SystemException::_downcast(&ex);
    return system != nullptr ? SystemExceptionText(*system, id)
                             : std::string("user exception, ID '") + id + "'";
}

void SetServantThreads(unsigned count) {
    orb_state().servants.SetLimit(count);
}

void SetIpFlag(bool) {
    // The host of an end point is published as it was given, so there is nothing to choose.
}

std::string PeerAddress(PortableInterceptor::ServerRequestInfo_ptr info) {
    const auto* upcall = dynamic_cast<UpcallInfo*>(info);
    if (upcall == nullptr) {
        return "";
    }
    const std::string address = upcall->peer_address();  // "giop:tcp:host:port"
    const std::size_t scheme = address.find(':');
    const std::size_t transport = scheme == std::string::npos ? scheme : address.find(':', scheme + 1);
    return transport == std::string::npos ? address : address.substr(transport + 1);
}

CORBA::ULong TaoMinorCode(CORBA::ULong location, int error_number) {
    struct Code {
        int error_number;
        CORBA::ULong value;
    };
    constexpr CORBA::ULong kUnspecified = 0x00;
    constexpr CORBA::ULong kUnknown = 0x7f;
    static const Code kCodes[] = {
        {0, kUnspecified},    {ETIMEDOUT, 0x01}, {ENFILE, 0x02}, {EMFILE, 0x03}, {EPIPE, 0x04},
        {ECONNREFUSED, 0x05}, {ENOENT, 0x06},    {EBADF, 0x07},  {ENOSYS, 0x08}, {EPERM, 0x09},
        {EAFNOSUPPORT, 0x0a}, {EAGAIN, 0x0b},    {ENOMEM, 0x0c}, {EACCES, 0x0d}, {EFAULT, 0x0e},
        {EBUSY, 0x0f},        {EEXIST, 0x10},    {EINVAL, 0x11}, {ECOMM, 0x12},  {ECONNRESET, 0x13},
        {ENOTSUP, 0x14},
    };
    for (const Code& code : kCodes) {
        if (code.error_number == error_number) {
            return location | code.value;
        }
    }
    return location | kUnknown;
}

DynamicAny::DynAny_ptr MakeDynAny(const CORBA::Any& value) {
    return TAO_DynAnyFactory().create_dyn_any(value);
}

void SetDiagnosticSink(DiagnosticSink sink) {
    g_sink = sink != nullptr ? sink : WriteToStandardError;
}

void Report(const std::string& line) {
    g_sink("[orb] " + line);
}

void ReportOnce(const std::string& line) {
    static std::mutex mutex;
    static std::set<std::string> said;
    std::lock_guard<std::mutex> guard(mutex);
    if (said.insert(line).second) {
        Report(line);
    }
}

}  // namespace qv_orb
