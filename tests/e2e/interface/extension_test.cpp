// The demo's own extension of the interface: values of every kind, and the change of a password.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include "accountManagerC.h"
#include "attributeManagerC.h"
#include "tests/e2e/harness/oss_in_process.h"

namespace qv_e2e {
namespace {

using testing::HasSubstr;

constexpr const char* kEms = "Zorvex/KLV";
constexpr const char* kNewPassword = "another horse battery";

class ExtensionTest : public InterfaceTest {
  protected:
    template <class Manager>
    typename Manager::_var_type Manage(emsSession::EmsSession_I_ptr session, const char* name) {
        common::Common_I_var manager;
        session->getManager(name, manager.out());
        return Manager::_narrow(manager.in());
    }

    accountManager::AccountMgr_I_var Account(emsSession::EmsSession_I_ptr session) {
        return Manage<accountManager::AccountMgr_I>(session, "Account");
    }

    std::string Users() const { return qv_test::ReadFile(deployment.dir().File("users.toml")); }
};

class AttributeTest : public ExtensionTest {
  protected:
    void LogInToAttributes() {
        Start();
        session = LogIn();
        attributes = Manage<attributeManager::AttributeMgr_I>(session.in(), "Attribute");
        ASSERT_FALSE(CORBA::is_nil(attributes.in()));
    }

    attributeManager::AttributeList_T_var All() {
        attributeManager::AttributeList_T_var list;
        attributes->getAttributes(element, list.out());
        return list;
    }

    const globaldefs::NamingAttributes_T element = ElementName(kEms, "NE-00001");
    emsSession::EmsSession_I_var session;
    attributeManager::AttributeMgr_I_var attributes;
};

TEST_F(AttributeTest, AListOfStructuresWithUnionsComesBackByName) {
    LogInToAttributes();
    attributeManager::AttributeList_T list;
    list.length(3);
    list[0].name = "text";
    list[0].value.text("a text");
    list[1].name = "flag";
    list[1].value.flag(true);
    list[2].name = "number";
    list[2].value.number(-7);
    attributes->setAttributes(element, list);
    auto all = All();
    ASSERT_EQ(all->length(), 3U);
    EXPECT_STREQ(all[0].name, "flag");
    EXPECT_TRUE(all[0].value.flag());
    EXPECT_EQ(all[1].value.number(), -7);
    EXPECT_STREQ(all[2].value.text(), "a text");
}

TEST_F(AttributeTest, AnAnyKeepsItsType) {
    LogInToAttributes();
    CORBA::Any value;
    value <<= static_cast<CORBA::Long>(70);
    attributes->setAttributeValue(element, "limit", value);
    EXPECT_EQ(All()[0].value._d(), attributeManager::VK_NUMBER);
    const CORBA::Any_var kept = attributes->getAttributeValue(element, "limit");
    CORBA::Long number = 0;
    ASSERT_TRUE(kept.in() >>= number);
    EXPECT_EQ(number, 70);
    value <<= CORBA::Any::from_boolean(false);
    attributes->setAttributeValue(element, "limit", value);
    const CORBA::Any_var changed = attributes->getAttributeValue(element, "limit");
    CORBA::Boolean flag = true;
    ASSERT_TRUE(changed.in() >>= CORBA::Any::to_boolean(flag));
    EXPECT_FALSE(flag);
}

TEST_F(AttributeTest, WhatCannotBeKeptIsRefused) {
    LogInToAttributes();
    CORBA::Any value;
    value <<= 1.5;
    EXPECT_EQ(FailureOf([&] { attributes->setAttributeValue(element, "limit", value); }),
              globaldefs::EXCPT_INVALID_INPUT);
    value <<= "a text";
    EXPECT_EQ(FailureOf([&] { attributes->setAttributeValue(element, "", value); }),
              globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(FailureOf([&] { attributes->setAttributeValue(ElementName(kEms, "NE-x"), "limit", value); }),
              globaldefs::EXCPT_ENTITY_NOT_FOUND);
    EXPECT_EQ(FailureOf([&] { attributes->getAttributeValue(element, "limit"); }),
              globaldefs::EXCPT_ENTITY_NOT_FOUND);
    attributeManager::AttributeList_T many;
    many.length(101);
    for (CORBA::ULong i = 0; i < many.length(); ++i) {
        many[i].name = std::to_string(i).c_str();
        many[i].value.flag(true);
    }
    EXPECT_EQ(FailureOf([&] { attributes->setAttributes(element, many); }),
              globaldefs::EXCPT_CAPACITY_EXCEEDED);
    EXPECT_EQ(All()->length(), 0U);
}

TEST_F(AttributeTest, ElementsAreCountedByTheirState) {
    LogInToAttributes();
    EXPECT_EQ(attributes->countElements(managedElement::CS_AVAILABLE), 285U);
    EXPECT_EQ(attributes->countElements(managedElement::CS_UNAVAILABLE), 15U);
}

TEST_F(ExtensionTest, ANewPasswordCountsFromTheNextLoginOnAndChangesNothingElse) {
    deployment.AddUser("other", "the other's password");
    Start();
    const std::string before = Users();
    const auto session = LogIn();
    Account(session.in())->modifyPassword("oss", Deployment::kPassword, kNewPassword);
    session->ping();
    EXPECT_EQ(FailureOf([&] { LogIn(); }), globaldefs::EXCPT_ACCESS_DENIED);
    LogIn("oss", kNewPassword)->ping();
    LogIn("other", "the other's password")->ping();
    EXPECT_NE(Users(), before);
    EXPECT_THAT(Users(), HasSubstr(before.substr(before.find("name = \"other\""))));
    struct stat status {};
    ASSERT_EQ(::stat(deployment.dir().File("users.toml").c_str(), &status), 0);
    EXPECT_EQ(status.st_mode & 0777U, 0600U);
}

TEST_F(ExtensionTest, AUserChangesItsOwnPasswordAloneAndKnowsTheOldOne) {
    deployment.AddUser("other", "the other's password");
    Start();
    const std::string before = Users();
    const auto session = LogIn();
    const auto account = Account(session.in());
    const auto change = [&](const char* user, const char* old_password, const char* new_password) {
        return FailureOf([&] { account->modifyPassword(user, old_password, new_password); });
    };
    EXPECT_EQ(change("other", "the other's password", kNewPassword), globaldefs::EXCPT_ACCESS_DENIED);
    EXPECT_EQ(change("oss", "wrong", kNewPassword), globaldefs::EXCPT_ACCESS_DENIED);
    EXPECT_EQ(change("oss", Deployment::kPassword, "seven c"), globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(change("oss", Deployment::kPassword, std::string(1025, 'x').c_str()),
              globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(change("oss", Deployment::kPassword, Deployment::kPassword), globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(Users(), before);
}

TEST_F(ExtensionTest, AFileOfUsersThatCannotBeReplacedStaysAsItIs) {
    Start();
    const auto session = LogIn();
    const auto account = Account(session.in());
    // A directory in its place can't be replaced, not even by root.
    const std::string users = deployment.dir().File("users.toml");
    const std::string moved = deployment.dir().File("moved.toml");
    ASSERT_EQ(::rename(users.c_str(), moved.c_str()), 0);
    ASSERT_EQ(::mkdir(users.c_str(), 0700), 0);
    std::string reason;
    EXPECT_EQ(
        FailureOf([&] { account->modifyPassword("oss", Deployment::kPassword, kNewPassword); }, &reason),
        globaldefs::EXCPT_INTERNAL_ERROR);
    EXPECT_EQ(reason, "the EMS can't store the new password; the old one stays");
    EXPECT_TRUE(deployment.agent().WaitForOut("a password can't be changed: "));
    ASSERT_EQ(::rmdir(users.c_str()), 0);
    ASSERT_EQ(::rename(moved.c_str(), users.c_str()), 0);
    LogIn()->ping();
}

}  // namespace
}  // namespace qv_e2e
