#include <ace/OS_NS_stdio.h>

#include <sys/stat.h>

#include <climits>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <memory>
#include <mutex>
#include <string>

#include "agent/corbabaseagentconfig.h"
#include "logging/corbalogutil.h"

namespace NS_CORBA {

namespace {

constexpr mode_t kFileMask = 037;  // files come out with 0640 at most
constexpr std::size_t kPathSize = 4096;
static_assert(kPathSize >= PATH_MAX, "realpath needs a buffer of PATH_MAX bytes");

struct CloseFile {
    void operator()(std::FILE* file) const { std::fclose(file); }
};
using FilePtr = std::unique_ptr<std::FILE, CloseFile>;

/// `orb` itself; raises where a call to it would crash because Init hasn't made one yet.
CORBA::ORB* Live(CORBA::ORB* orb) {
    if (CORBA::is_nil(orb)) {
        throw CORBA::BAD_INV_ORDER();
    }
    return orb;
}

FilePtr OpenForWriting(const char* file) {
    // The mask is the whole process's: of two threads in here at once the second would save the mask that the
    // first has set, and leave it behind.
    static std::mutex maskLock;
    const std::lock_guard<std::mutex> guard(maskLock);
    const mode_t oldMask = ::umask(kFileMask);
    char path[kPathSize] = {};
    // A file that doesn't exist yet is no failure: what realpath left in the buffer is the name to create.
    const char* resolved = ::realpath(file, path);
    static_cast<void>(resolved);
    FilePtr opened(std::fopen(path, "w"));
    ::umask(oldMask);
    return opened;
}

}  // namespace

int CorbaBaseAgentConfig::Write_ior(const char* file, CORBA::Object* object) {
    FuncGuardTrace trace("CorbaBaseAgentConfig::Write_ior");
    if (file == nullptr) {
        TA_POS;
        TaTrace("[CorbaBaseAgentConfig::Write_ior] IOR file name is nullptr!");
        return -1;
    }
    FilePtr output = OpenForWriting(file);
    if (output == nullptr) {
        TA_POS;
        TaTrace("Unable to open file %s for writing!\n", file);
        return -1;
    }
    CORBA::String_var ior;
    try {
        ior = Live(m_ORB.in())->object_to_string(object);
    } catch (CORBA::Exception&) {
        output.reset();
        TA_POS;
        TaTrace("Unknown exception received during object_to_string!\n");
        return -1;
    }
    // What doesn't fit on the disk shows when the buffer is written out, not when it is filled.
    if (ACE_OS::fprintf(output.get(), "%s", ior.in()) < 1 || std::fflush(output.get()) != 0) {
        TA_POS;
        TaTrace("fprintf ior_output_file_ failed!\n");
    }
    return 0;
}

int CorbaBaseAgentConfig::Read_ior(const char* file, TAO_Pseudo_Out_T<CORBA::Object> object) {
    if (file == nullptr) {
        TA_POS;
        TaTrace("IOR file name is nullptr!\n");
        return -1;
    }
    std::ifstream input(file);
    if (!input.is_open()) {
        TA_POS;
        TaTrace("Unable to open file %s for reading!\n", file);
        return -1;
    }
    std::string line;
    std::getline(input, line);
    if (line.empty()) {
        TA_POS;
        TaTrace("IOR file is empty!\n");
        return -1;
    }
    const std::size_t start = line.find("IOR:");
    if (start != std::string::npos) {
        line.erase(0, start);
    }
    CORBA::Object_var reference;
    try {
        reference = Live(m_ORB.in())->string_to_object(line.c_str());
    } catch (CORBA::Exception&) {
        TA_POS;
        TaTrace("Unknown exception received during string_to_object!\n");
    }
    if (CORBA::is_nil(reference.in())) {
        TA_POS;
        TaTrace("Object ref is nullptr!\n");
        return -1;
    }
    object = reference._retn();
    return 0;
}

}  // namespace NS_CORBA
