#include "request/process_exception.h"

#include "logging/logmgr.h"

namespace NS_CORBA {

namespace {

constexpr int kFailureLevel = 1;

}  // namespace

ProcessException::ProcessException() = default;

ProcessException::ProcessException(ProcessException& other)
    : std::exception(other), m_code(other.m_code), m_line(other.m_line) {
    m_file << other.m_file.rdbuf();
    m_function << other.m_function.rdbuf();
    m_detail << other.m_detail.rdbuf();
    m_message << other.m_message.rdbuf();
}

ProcessException::~ProcessException() = default;

InterfaceNotExistException::~InterfaceNotExistException() = default;

void NbiException(ProcessException& e) {
    CorbaLogMgr* const manager = CorbaLogMgr::Instance();
    if (!manager) {
        return;
    }
    // By c_str(), since a text ends at its first NUL wherever it is logged.
    if (PosForDbg* const position = static_cast<PosForDbg*>(*manager)) {
        position->file = e.m_file.str().c_str();
        position->function = e.m_function.str().c_str();
        position->line = e.m_line;
    }
    manager->TADebug(kFailureLevel, e.m_message.str().c_str());
}

}  // namespace NS_CORBA
