// The MTNM operations one by one, through the stubs.
#include <gmock/gmock.h>

#include "tests/e2e/harness/oss_in_process.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

constexpr const char* kEms = "Zorvex/KLV";

TEST_F(InterfaceTest, TheFactoryTellsTheVersionAndWantsAClient) {
    Start();
    const CORBA::String_var version = factory->getVersion();
    EXPECT_STREQ(version.in(), "2.0");
    client = nmsSession::NmsSession_I::_nil();
    EXPECT_EQ(FailureOf([&] { LogIn(); }), globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(FailureOf([&] { LogIn("oss", "wrong"); }), globaldefs::EXCPT_ACCESS_DENIED)
        << "who isn't known learns nothing about the rest";
}

TEST_F(InterfaceTest, ASessionKnowsItsClientAndItsManagers) {
    Start();
    const auto session = LogIn();
    session->ping();
    const session::Session_I_var associated = session->associatedSession();
    EXPECT_TRUE(client->_is_equivalent(associated.in()));
    emsSession::EmsSession_I::managerNames_T_var names;
    session->getSupportedManagers(names.out());
    ASSERT_EQ(names->length(), 4U);
    EXPECT_STREQ(names[0], "Account");
    EXPECT_STREQ(names[1], "Attribute");
    EXPECT_STREQ(names[2], "EMS");
    EXPECT_STREQ(names[3], "ManagedElement");
}

TEST_F(InterfaceTest, WhatTheEmsLacksIsNotImplemented) {
    Start();
    const auto session = LogIn();
    common::Common_I_var manager;
    std::string reason;
    EXPECT_EQ(FailureOf([&] { session->getManager("Protection", manager.out()); }, &reason),
              globaldefs::EXCPT_NOT_IMPLEMENTED);
    EXPECT_EQ(reason, "Protection");
    CosNotifyChannelAdmin::EventChannel_var channel;
    EXPECT_EQ(FailureOf([&] { session->getEventChannel(channel.out()); }), globaldefs::EXCPT_NOT_IMPLEMENTED);
}

TEST_F(InterfaceTest, AManagerIsTheSameObjectEachTime) {
    Start();
    const auto session = LogIn();
    common::Common_I_var first;
    common::Common_I_var second;
    session->getManager("EMS", first.out());
    session->getManager("EMS", second.out());
    EXPECT_TRUE(first->_is_equivalent(second.in()));
    const emsMgr::EMSMgr_I_var ems = emsMgr::EMSMgr_I::_narrow(first.in());
    ASSERT_FALSE(CORBA::is_nil(ems.in()));
    common::CapabilityList_T_var capabilities;
    ems->getCapabilities(capabilities.out());
    ASSERT_EQ(capabilities->length(), 6U);
    EXPECT_STREQ(capabilities[5].name, "getEMS");
    EXPECT_STREQ(capabilities[5].value, "Supported");
}

TEST_F(InterfaceTest, ObjectsOfASessionGoWithIt) {
    Start();
    const auto session = LogIn();
    const auto elements = Elements(session.in());
    session->endSession();
    EXPECT_TRUE(qv_test::WaitFor([&] { return IsGone([&] { session->ping(); }); }));
    managedElement::ManagedElement_T_var element;
    EXPECT_TRUE(qv_test::WaitFor([&] {
        return IsGone([&] { elements->getManagedElement(ElementName(kEms, "NE-00001"), element.out()); });
    }));
}

TEST_F(InterfaceTest, LoggingInAgainOnTheSameConnectionReplacesTheSession) {
    Start();
    const auto first = LogIn();
    for (int i = 0; i < 5; ++i) {
        const auto next = LogIn();
        next->ping();
        next->endSession();
    }
    const auto last = LogIn();
    last->ping();
    EXPECT_THROW(first->ping(), CORBA::OBJECT_NOT_EXIST);
}

TEST_F(InterfaceTest, ElementsAreFoundByTheirFullNamesAlone) {
    Start();
    const auto session = LogIn();
    const auto elements = Elements(session.in());
    managedElement::ManagedElement_T_var element;
    elements->getManagedElement(ElementName(kEms, "NE-00003"), element.out());
    EXPECT_STREQ(element->userLabel, "Celle-001");
    EXPECT_STREQ(element->name[1].value, "NE-00003");

    std::string reason;
    const auto get = [&](const globaldefs::NamingAttributes_T& name) {
        return FailureOf([&] { elements->getManagedElement(name, element.out()); }, &reason);
    };
    EXPECT_EQ(get(ElementName(kEms, "NE-x")), globaldefs::EXCPT_ENTITY_NOT_FOUND);
    EXPECT_EQ(reason, "NE-x");
    EXPECT_EQ(get(ElementName("Other/EMS", "NE-00003")), globaldefs::EXCPT_ENTITY_NOT_FOUND);
    EXPECT_EQ(get(globaldefs::NamingAttributes_T()), globaldefs::EXCPT_INVALID_INPUT);
    globaldefs::NamingAttributes_T odd = ElementName(kEms, "NE-00003");
    odd[1].name = "PTP";
    EXPECT_EQ(get(odd), globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(reason, "EMS=Zorvex/KLV/PTP=NE-00003");
}

TEST_F(InterfaceTest, ChangesOfAnElementAreSeenByAll) {
    Start();
    const auto session = LogIn();
    const auto elements = Elements(session.in());
    const auto name = ElementName(kEms, "NE-00001");
    elements->setUserLabel(name, "My own label", true);
    elements->setOwner(name, "me");
    elements->setNativeEMSName(name, "native");
    globaldefs::NVSList_T info;
    info.length(2);
    info[0].name = "Rack";
    info[0].value = "-";
    info[1].name = "Note";
    info[1].value = "seen";
    elements->setAdditionalInfo(name, info);
    EXPECT_EQ(info.length(), 3U) << "one of three is gone, one is new";

    managedElement::ManagedElement_T_var element;
    elements->getManagedElement(name, element.out());
    EXPECT_STREQ(element->userLabel, "My own label");
    EXPECT_STREQ(element->owner, "me");
    EXPECT_STREQ(element->nativeEMSName, "native");
    EXPECT_EQ(element->additionalInfo.length(), 3U);

    const auto other = ElementName(kEms, "NE-00002");
    EXPECT_EQ(FailureOf([&] { elements->setUserLabel(other, "My own label", true); }),
              globaldefs::EXCPT_USERLABEL_IN_USE);
    elements->setUserLabel(other, "My own label", false);
    EXPECT_EQ(FailureOf([&] { elements->setOwner(ElementName(kEms, "NE-x"), "me"); }),
              globaldefs::EXCPT_ENTITY_NOT_FOUND);
}

TEST_F(InterfaceTest, AnElementsTextsAreBounded) {
    Start();
    const auto session = LogIn();
    const auto elements = Elements(session.in());
    const auto name = ElementName(kEms, "NE-00001");
    const std::string longest(1024, 'x');
    const std::string longer = longest + "x";
    elements->setOwner(name, longest.c_str());
    EXPECT_EQ(FailureOf([&] { elements->setOwner(name, longer.c_str()); }), globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(FailureOf([&] { elements->setNativeEMSName(name, longer.c_str()); }),
              globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_EQ(FailureOf([&] { elements->setUserLabel(name, longer.c_str(), false); }),
              globaldefs::EXCPT_INVALID_INPUT);
    globaldefs::NVSList_T info;
    info.length(101);
    for (CORBA::ULong i = 0; i < info.length(); ++i) {
        info[i].name = std::to_string(i).c_str();
        info[i].value = "v";
    }
    EXPECT_EQ(FailureOf([&] { elements->setAdditionalInfo(name, info); }),
              globaldefs::EXCPT_CAPACITY_EXCEEDED);
    managedElement::ManagedElement_T_var element;
    elements->getManagedElement(name, element.out());
    EXPECT_STREQ(element->owner, longest.c_str());
    EXPECT_EQ(element->additionalInfo.length(), 3U);
}

}  // namespace
}  // namespace qv_e2e
