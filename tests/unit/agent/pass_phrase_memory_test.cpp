// The pass phrase of the agent's key in memory that was given back. This program replaces the functions that
// allocate, so that it can look into each block that is freed.
#include <fcntl.h>
#include <malloc.h>
#include <string.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <new>

#include "tests/unit/agent/agent_fixture.h"

namespace {

constexpr char kPassPhrase[] = "long-enough-to-be-kept-on-the-heap";
std::atomic<bool> g_watching{false};
std::atomic<int> g_found{0};

void* Allocate(std::size_t size) {
    void* const block = std::malloc(size);
    if (!block) {
        throw std::bad_alloc();
    }
    return block;
}

/// Frees `block`. Outside the watch it is wiped, so that its next owner doesn't seem to know the pass phrase.
void Free(void* block) noexcept {
    if (block) {
        const std::size_t size = malloc_usable_size(block);
        if (!g_watching) {
            explicit_bzero(block, size);
        } else if (memmem(block, size, kPassPhrase, sizeof kPassPhrase - 1)) {
            ++g_found;
        }
    }
    std::free(block);
}

}  // namespace

void* operator new(std::size_t size) {
    return Allocate(size);
}
void* operator new[](std::size_t size) {
    return Allocate(size);
}
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void* operator new[](std::size_t size, const std::nothrow_t&) noexcept {
    return std::malloc(size);
}
void operator delete(void* block) noexcept {
    Free(block);
}
void operator delete[](void* block) noexcept {
    Free(block);
}
void operator delete(void* block, std::size_t) noexcept {
    Free(block);
}
void operator delete[](void* block, std::size_t) noexcept {
    Free(block);
}

namespace qv_test {
namespace {

using NS_CORBA::CorbaBaseAgentConfig;
using Probe = NS_CORBA::CorbaBaseAgentConfigProbe;

/// Counts the blocks with the pass phrase in them that `work` gives back.
template <class Work>
int FoundDuring(Work work) {
    g_found = 0;
    g_watching = true;
    work();
    g_watching = false;
    return g_found;
}

class PassPhraseMemory : public ::testing::Test {
  protected:
    ~PassPhraseMemory() override { CorbaBaseAgentConfig::Destroy(); }

    /// Without a buffer, in which the pass phrase would lie about.
    void WriteProfile() {
        const std::string file = m_dir.File("agent.conf");
        const int out = ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
        ASSERT_NE(-1, out);
        for (const char* const text : {"-SSLPrivateKeyPasswd ", kPassPhrase, "\n-SSLCAfile PEM:/ca.pem\n"}) {
            ASSERT_EQ(static_cast<ssize_t>(strlen(text)), ::write(out, text, strlen(text)));
        }
        ::close(out);
        Probe::SSLProfile() = file;
    }

    TempDir m_dir;
};

TEST_F(PassPhraseMemory, TheWatchSeesWhatIsLeftBehind) {
    EXPECT_EQ(1, FoundDuring([] { const std::string copy(kPassPhrase); }));
}

TEST_F(PassPhraseMemory, ReadingTheProfileLeavesNothingBehind) {
    WriteProfile();
    EXPECT_EQ(0, FoundDuring([] { Probe::Get().GetNBISSLCertificateInfo(); }));
    EXPECT_EQ(kPassPhrase, Probe::Get().GetNBISSLPrivateKeyPasswd());
    EXPECT_EQ("/ca.pem", Probe::Get().GetNBISSLCAfile());
}

TEST_F(PassPhraseMemory, TheEndOfTheConfigurationLeavesNothingBehind) {
    WriteProfile();
    Probe::Get().GetNBISSLCertificateInfo();
    EXPECT_EQ(0, FoundDuring([] { CorbaBaseAgentConfig::Destroy(); }));
}

}  // namespace
}  // namespace qv_test
