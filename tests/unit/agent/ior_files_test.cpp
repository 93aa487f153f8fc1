#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <thread>

#include "tests/support/wait_for.h"
#include "tests/unit/agent/agent_fixture.h"
#include "tests/unit/agent/plain_servant.h"

namespace qv_test {
namespace {

class IorFiles : public AgentTest {
  protected:
    /// A reference that can be written; its text is longer than `atLeast` characters.
    CORBA::Object_var Reference(std::size_t atLeast = 0) {
        if (CORBA::is_nil(m_orb.in())) {
            m_orb = MakeOrb();
        }
        return m_orb->string_to_object(
            ("corbaloc:iiop:192.0.2.1:5000/" + std::string("key") + std::string(atLeast / 2, 'k')).c_str());
    }

    std::string IorOf(CORBA::Object_ptr object) {
        return CORBA::String_var(m_orb->object_to_string(object)).in();
    }

    /// Reads `contents` as an IOR file: the result, and whether the reference is the one of `ior`.
    int Read(const std::string& contents, CORBA::Object_var& object) {
        return config().Read_ior(m_dir.Write("read.ior", contents).c_str(), object);
    }

    CORBA::ORB_var m_orb;
};

TEST_F(IorFiles, FileHoldsTheReferenceAndNothingElse) {
    CORBA::Object_var object = Reference();
    const std::string file = m_dir.File("new.ior");
    EXPECT_EQ(0, config().Write_ior(file.c_str(), object.in()));
    EXPECT_EQ(IorOf(object.in()), ReadFile(file));
    EXPECT_TRUE(m_log->Contains(kDebug, "===[CorbaBaseAgentConfig::Write_ior] Entering..."));
    EXPECT_TRUE(m_log->Contains(kDebug, "===[CorbaBaseAgentConfig::Write_ior] Leaved!"));
}

TEST_F(IorFiles, WhatIsWrittenCanBeRead) {
    CORBA::Object_var object = Reference();
    const std::string file = m_dir.File("new.ior");
    ASSERT_EQ(0, config().Write_ior(file.c_str(), object.in()));
    CORBA::Object_var read;
    EXPECT_EQ(0, config().Read_ior(file.c_str(), read));
    EXPECT_TRUE(object->_is_equivalent(read.in()));
}

TEST_F(IorFiles, ExistingFileIsReplaced) {
    CORBA::Object_var object = Reference();
    const std::string file = m_dir.Write("old.ior", std::string(5000, 'x'));
    EXPECT_EQ(0, config().Write_ior(file.c_str(), object.in()));
    EXPECT_EQ(IorOf(object.in()), ReadFile(file));
}

TEST_F(IorFiles, FileIsForOwnerAndGroupAndTheMaskComesBack) {
    CORBA::Object_var object = Reference();
    const mode_t before = ::umask(0);
    const std::string file = m_dir.File("mode.ior");
    EXPECT_EQ(0, config().Write_ior(file.c_str(), object.in()));
    EXPECT_EQ(0u, ::umask(before));
    struct stat status {};
    ASSERT_EQ(0, ::stat(file.c_str(), &status));
    EXPECT_EQ(0640u, status.st_mode & 0777u);
}

TEST_F(IorFiles, LinkAndDotsAreResolved) {
    CORBA::Object_var object = Reference();
    const std::string target = m_dir.Write("target.ior", "old");
    std::filesystem::create_directory(m_dir.path() / "sub");
    std::filesystem::create_symlink(target, m_dir.path() / "sub" / "link.ior");
    EXPECT_EQ(0, config().Write_ior(m_dir.File("sub/../sub/link.ior").c_str(), object.in()));
    EXPECT_EQ(IorOf(object.in()), ReadFile(target));
}

TEST_F(IorFiles, MissingDirectoryMakesAFileOfItsName) {
    // The name is only resolved as far as it exists, and what came out of that is opened.
    CORBA::Object_var object = Reference();
    EXPECT_EQ(0, config().Write_ior(m_dir.File("missing/deeper/x.ior").c_str(), object.in()));
    EXPECT_EQ(IorOf(object.in()), ReadFile(m_dir.File("missing")));
}

TEST_F(IorFiles, WritingWithoutANameFails) {
    CORBA::Object_var object = Reference();
    EXPECT_EQ(-1, config().Write_ior(nullptr, object.in()));
    ExpectLog(kSys, -1, "ior_files", "[CorbaBaseAgentConfig::Write_ior] IOR file name is nullptr!");
}

TEST_F(IorFiles, WritingToADirectoryFails) {
    CORBA::Object_var object = Reference();
    EXPECT_EQ(-1, config().Write_ior(m_dir.str().c_str(), object.in()));
    ExpectLog(kSys, -1, "ior_files", "Unable to open file " + m_dir.str() + " for writing!\n",
              "for writing!");
}

TEST_F(IorFiles, ReferenceThatCannotBeWrittenLeavesAnEmptyFile) {
    // Before there is an ORB nothing can be turned into text.
    const std::string file = m_dir.File("empty.ior");
    EXPECT_EQ(-1, config().Write_ior(file.c_str(), CORBA::Object::_nil()));
    EXPECT_TRUE(std::filesystem::exists(file));
    EXPECT_EQ("", ReadFile(file));
    ExpectLog(kSys, -1, "ior_files", "Unknown exception received during object_to_string!\n");
}

TEST_F(IorFiles, FullDiskIsLoggedAndStillAResultOf0) {
    CORBA::Object_var object = Reference(20000);  // more than a stream buffers
    EXPECT_EQ(0, config().Write_ior("/dev/full", object.in()));
    ExpectLog(kSys, -1, "ior_files", "fprintf ior_output_file_ failed!\n");
}

TEST_F(IorFiles, FullDiskIsLoggedAlsoForATextThatTheStreamBuffers) {
    CORBA::Object_var object = Reference();
    EXPECT_EQ(0, config().Write_ior("/dev/full", object.in()));
    ExpectLog(kSys, -1, "ior_files", "fprintf ior_output_file_ failed!\n");
    EXPECT_EQ(1, CountLog(kSys, "fprintf ior_output_file_ failed!\n"));
}

TEST_F(IorFiles, MaskComesBackWhenTwoThreadsWriteAtOnce) {
    CORBA::Object_var object = Reference();
    const mode_t before = ::umask(022);
    const std::vector<std::string> pipes{m_dir.File("a.ior"), m_dir.File("b.ior")};
    std::vector<std::thread> writers;
    m_log->Clear();
    for (const std::string& pipe : pipes) {
        ASSERT_EQ(0, ::mkfifo(pipe.c_str(), 0600));
        // Waits in the middle of its opening until there is a reader.
        writers.emplace_back([&, pipe] { EXPECT_EQ(0, config().Write_ior(pipe.c_str(), object.in())); });
        const std::size_t count = writers.size();
        EXPECT_TRUE(WaitFor([&] {
            return m_log->Entries(kDebug).size() == count;  // the line of its entering
        }));
    }
    std::vector<int> readers;
    // With the mask left to both, the first to have come goes first and takes the mask of the second along.
    for (const std::string& pipe : pipes) {
        readers.push_back(::open(pipe.c_str(), O_RDONLY | O_NONBLOCK));
        EXPECT_NE(-1, readers.back());
    }
    for (std::thread& writer : writers) {
        writer.join();
    }
    for (const int reader : readers) {
        ::close(reader);
    }
    EXPECT_EQ(022u, ::umask(before));
}

TEST_F(IorFiles, TextAheadOfTheReferenceIsCutOff) {
    CORBA::Object_var object = Reference();
    CORBA::Object_var read;
    EXPECT_EQ(0, Read("factory at IOR:" + IorOf(object.in()).substr(4) + "\nsecond line\n", read));
    EXPECT_TRUE(object->_is_equivalent(read.in()));
}

TEST_F(IorFiles, OnlyTheFirstLineCounts) {
    CORBA::Object_var object = Reference();
    CORBA::Object_var read;
    EXPECT_EQ(-1, Read("nonsense\n" + IorOf(object.in()), read));
    EXPECT_TRUE(CORBA::is_nil(read.in()));
}

TEST_F(IorFiles, LineWithoutIorIsTakenAsItStands) {
    CORBA::Object_var object = Reference();
    CORBA::Object_var read;
    EXPECT_EQ(0, Read("corbaloc:iiop:192.0.2.1:5000/key\n", read));
    EXPECT_TRUE(object->_is_equivalent(read.in()));
}

TEST_F(IorFiles, EmptyLineFails) {
    m_orb = MakeOrb();
    CORBA::Object_var read;
    EXPECT_EQ(-1, Read("\n", read));
    ExpectLog(kSys, -1, "ior_files", "IOR file is empty!\n");
    m_log->Clear();
    EXPECT_EQ(-1, Read("", read));
    ExpectLog(kSys, -1, "ior_files", "IOR file is empty!\n");
}

TEST_F(IorFiles, ReadingWithoutANameFails) {
    CORBA::Object_var read;
    EXPECT_EQ(-1, config().Read_ior(nullptr, read));
    ExpectLog(kSys, -1, "ior_files", "IOR file name is nullptr!\n");
}

TEST_F(IorFiles, MissingFileFails) {
    const std::string file = m_dir.File("none.ior");
    CORBA::Object_var read;
    EXPECT_EQ(-1, config().Read_ior(file.c_str(), read));
    ExpectLog(kSys, -1, "ior_files", "Unable to open file " + file + " for reading!\n", "for reading!");
}

TEST_F(IorFiles, GarbageFailsAndClearsTheReference) {
    CORBA::Object_var read = Reference();
    EXPECT_EQ(-1, Read("IOR:zz\xff not a reference", read));
    EXPECT_TRUE(CORBA::is_nil(read.in()));
    ExpectLog(kSys, -1, "ior_files", "Unknown exception received during string_to_object!\n");
    ExpectLog(kSys, -1, "ior_files", "Object ref is nullptr!\n");
}

TEST_F(IorFiles, NilReferenceFails) {
    m_orb = MakeOrb();
    CORBA::Object_var read;
    EXPECT_EQ(-1, Read(IorOf(CORBA::Object::_nil()), read));
    ExpectLog(kSys, -1, "ior_files", "Object ref is nullptr!\n");
    EXPECT_FALSE(m_log->Contains(kSys, "Unknown exception"));
}

}  // namespace
}  // namespace qv_test
