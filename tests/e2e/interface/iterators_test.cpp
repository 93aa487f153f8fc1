// Long lists page by page, through the stubs.
#include <gmock/gmock.h>

#include "tests/e2e/harness/oss_in_process.h"
#include "tests/support/wait_for.h"

namespace qv_e2e {
namespace {

class IteratorTest : public InterfaceTest {
  protected:
    using Iterator = managedElement::ManagedElementIterator_I_var;

    /// Asks for the first ten of the 300 elements.
    Iterator Open(managedElementManager::ManagedElementMgr_I_ptr elements) {
        managedElement::ManagedElementList_T_var page;
        Iterator rest;
        elements->getAllManagedElements(10, page.out(), rest.out());
        EXPECT_EQ(page->length(), 10U);
        return rest;
    }

    static bool IsGone(managedElement::ManagedElementIterator_I_ptr iterator) {
        return qv_e2e::IsGone([&] { iterator->getLength(); });
    }
};

TEST_F(IteratorTest, NamesComeInTheOrderOfTheInventory) {
    Start();
    const auto session = LogIn();
    const auto elements = Elements(session.in());
    globaldefs::NamingAttributesList_T_var names;
    globaldefs::NamingAttributesIterator_I_var rest;
    elements->getAllManagedElementNames(100, names.out(), rest.out());
    ASSERT_EQ(names->length(), 100U);
    EXPECT_STREQ(names[99][1].value, "NE-00100");
    EXPECT_EQ(rest->getLength(), 300U);
    EXPECT_TRUE(rest->next_n(150, names.out()));
    EXPECT_STREQ(names[0][1].value, "NE-00101");
    EXPECT_FALSE(rest->next_n(1000, names.out())) << "that was the last one";
    ASSERT_EQ(names->length(), 50U);
    EXPECT_STREQ(names[49][1].value, "NE-00300");
    EXPECT_THROW(rest->getLength(), CORBA::OBJECT_NOT_EXIST) << "an iterator that is used up is gone";
}

TEST_F(IteratorTest, EverythingAtOnceNeedsNoIteratorAndNothingAtFirstIsAllowed) {
    Start();
    const auto session = LogIn();
    const auto elements = Elements(session.in());
    managedElement::ManagedElementList_T_var page;
    Iterator rest;
    elements->getAllManagedElements(300, page.out(), rest.out());
    EXPECT_EQ(page->length(), 300U);
    EXPECT_TRUE(CORBA::is_nil(rest.in()));
    elements->getAllManagedElements(0, page.out(), rest.out());
    EXPECT_EQ(page->length(), 0U);
    ASSERT_FALSE(CORBA::is_nil(rest.in()));
    EXPECT_EQ(FailureOf([&] { rest->next_n(0, page.out()); }), globaldefs::EXCPT_INVALID_INPUT);
    EXPECT_FALSE(rest->next_n(0xffffffff, page.out()));
    EXPECT_EQ(page->length(), 300U);
}

TEST_F(IteratorTest, OneSessionMayHoldSoManyAndADestroyedOneMakesRoom) {
    deployment.Set("IteratorRestriction", "2");
    Start();
    const auto session = LogIn();
    const auto elements = Elements(session.in());
    const Iterator first = Open(elements.in());
    const Iterator second = Open(elements.in());
    EXPECT_EQ(FailureOf([&] { Open(elements.in()); }), globaldefs::EXCPT_TOO_MANY_OPEN_ITERATORS);
    first->destroy();
    EXPECT_TRUE(IsGone(first.in()));
    EXPECT_FALSE(IsGone(Open(elements.in()).in()));
    EXPECT_FALSE(IsGone(second.in()));
}

TEST_F(IteratorTest, IteratorsEndWithTheirSession) {
    deployment.Set("IteratorMaxNum", "1");
    Start();
    Iterator left_behind;
    {
        const auto session = LogIn();
        left_behind = Open(Elements(session.in()).in());
        session->endSession();
    }
    EXPECT_TRUE(qv_test::WaitFor([&] { return IsGone(left_behind.in()); }));
    const auto session = LogIn();
    EXPECT_FALSE(IsGone(Open(Elements(session.in()).in()).in())) << "the only place is free again";
}

TEST_F(IteratorTest, AnUnusedIteratorExpires) {
    deployment.Set("TimeOut", "1");
    Start();
    const auto session = LogIn();
    const Iterator idle = Open(Elements(session.in()).in());
    // Asking would be a use, so this has to wait for the time to pass.
    const auto opened = std::chrono::steady_clock::now();
    ASSERT_TRUE(qv_test::WaitFor(
        [&] { return std::chrono::steady_clock::now() - opened > std::chrono::milliseconds(3500); }));
    EXPECT_TRUE(IsGone(idle.in()));
    session->ping();
}

}  // namespace
}  // namespace qv_e2e
