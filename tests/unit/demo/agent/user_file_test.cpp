#include "demo/agent/core/user_file.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "tests/support/temp_dir.h"

namespace qv_demo {
namespace {

using testing::AllOf;
using testing::HasSubstr;

std::string WriteUsers(const qv_test::TempDir& dir, const std::string& contents, mode_t mode = 0600) {
    const std::string path = dir.Write("users.toml", contents);
    ::chmod(path.c_str(), mode);
    return path;
}

std::string ErrorOf(const std::string& contents, mode_t mode = 0600) {
    const qv_test::TempDir dir;
    try {
        UserFile::Load(WriteUsers(dir, contents, mode));
    } catch (const UserFileError& e) {
        return e.what();
    }
    return "no error";
}

constexpr const char* kOneUser = "[[user]]\nname = \"oss\"\npassword_hash = \"$argon2id$v=19$x\"\n";

TEST(UserFile, FindsUsersByTheirExactNames) {
    const qv_test::TempDir dir;
    const UserFile users = UserFile::Load(WriteUsers(dir, kOneUser));
    ASSERT_NE(users.HashOf("oss"), nullptr);
    EXPECT_EQ(*users.HashOf("oss"), "$argon2id$v=19$x");
    EXPECT_EQ(users.HashOf("OSS"), nullptr);
    EXPECT_EQ(users.HashOf(""), nullptr);
}

TEST(UserFile, NamesTheLineOfWhatIsWrong) {
    EXPECT_THAT(ErrorOf("[[user]\n"), AllOf(HasSubstr("users.toml:1"), HasSubstr("not valid TOML")));
    EXPECT_THAT(ErrorOf("\n[[user]]\nname = \"oss\"\n"),
                AllOf(HasSubstr("users.toml:2"), HasSubstr("password_hash")));
    EXPECT_THAT(ErrorOf("[[user]]\nname = \"o<s\"\npassword_hash = \"$argon2id$\"\n"), HasSubstr("letters"));
    EXPECT_THAT(ErrorOf(std::string(kOneUser) + kOneUser), AllOf(HasSubstr(":4"), HasSubstr("twice")));
    EXPECT_THAT(ErrorOf(""), HasSubstr("no [[user]]"));
    EXPECT_THAT(ErrorOf("user = 5"), HasSubstr("no [[user]]"));
}

TEST(UserFile, APlainPasswordIsNoHashAndIsNotRepeated) {
    EXPECT_THAT(ErrorOf("[[user]]\nname = \"oss\"\npassword_hash = \"hunter2\"\n"),
                AllOf(HasSubstr("no Argon2id hash"), testing::Not(HasSubstr("hunter2"))));
}

TEST(UserFile, RefusesAFileThatEverybodyMayOpen) {
    EXPECT_THAT(ErrorOf(kOneUser, 0644), HasSubstr("chmod"));
    EXPECT_EQ(ErrorOf(kOneUser, 0640), "no error");
}

TEST(UserFile, AMissingFileAndADirectoryAreErrors) {
    const qv_test::TempDir dir;
    EXPECT_THROW(UserFile::Load(dir.File("nothing.toml")), UserFileError);
    EXPECT_THROW(UserFile::Load(dir.str()), UserFileError);
}

TEST(UserFile, NamesHoldNothingThatTheIdentityIsTakenApartBy) {
    EXPECT_TRUE(IsUserName("oss-1.north_a@lab"));
    EXPECT_TRUE(IsUserName(std::string(64, 'a')));
    for (const std::string& name :
         {std::string(), std::string(65, 'a'), std::string("a b"), std::string("a<b"), std::string("a/b"),
          std::string("a[b]"), std::string("\xc3\xa4")}) {
        EXPECT_FALSE(IsUserName(name)) << name;
    }
}

}  // namespace
}  // namespace qv_demo
