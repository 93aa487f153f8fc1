#include "logging/service_lookup.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <new>
#include <stdexcept>

#include "standalone/registry.h"
#include "tests/support/capturing_log_service.h"

namespace {

using NS_CORBA::InterfaceNotExistException;
using NS_CORBA::ServiceLookup;

class Greeter : public NS_BUNDLEMGR1::ServiceInterface {
  public:
    explicit Greeter(int number) : number(number) {}
    const int number;
};

class OtherService : public NS_BUNDLEMGR1::ServiceInterface {};

/// Counts how often it is asked, or fails.
class CountingObject : public NS_BUNDLEMGR1::ServiceObjectBase {
  public:
    CountingObject(NS_BUNDLEMGR1::ServiceInterface* service, int& asked)
        : m_service(service), m_asked(asked) {}
    NS_BUNDLEMGR1::ServiceInterface* GetInterface() override {
        ++m_asked;
        return m_service;
    }

  private:
    NS_BUNDLEMGR1::ServiceInterface* m_service;
    int& m_asked;
};

template <class Failure>
class FailingObject : public NS_BUNDLEMGR1::ServiceObjectBase {
  public:
    NS_BUNDLEMGR1::ServiceInterface* GetInterface() override { throw Failure(); }
};

/// A service object that is registered as long as it lives.
class Registered {
  public:
    Registered(std::string bundle, std::string name, std::shared_ptr<NS_BUNDLEMGR1::ServiceObjectBase> object)
        : m_bundle(std::move(bundle)), m_name(std::move(name)) {
        qv_standalone::ReplaceServiceObject(m_bundle, m_name, std::move(object));
    }
    Registered(std::string bundle, std::string name, NS_BUNDLEMGR1::ServiceInterface& service)
        : Registered(std::move(bundle), std::move(name), qv_standalone::MakeServiceObject(service)) {}
    ~Registered() { qv_standalone::ReplaceServiceObject(m_bundle, m_name, nullptr); }
    Registered(const Registered&) = delete;
    Registered& operator=(const Registered&) = delete;

  private:
    const std::string m_bundle;
    const std::string m_name;
};

/// Without the platform's own log service, which would come to life when it is asked for its interface.
class ServiceLookupTest : public ::testing::Test {
    qv_test::ScopedLogCapture m_noLogService{qv_test::ScopedLogCapture::kNoService};
};

class ServiceLookupDeathTest : public ServiceLookupTest {};

TEST_F(ServiceLookupTest, FindsTheServiceByItsTypeAmongAllBundles) {
    OtherService other;
    Greeter greeter(1);
    const Registered first("bundle_a", "other", other);
    const Registered second("bundle_b", "greeter", greeter);
    EXPECT_EQ(&ServiceLookup<Greeter>("Greeter").Get(), &greeter);
}

TEST_F(ServiceLookupTest, AsksNoBundleForWhatIsCached) {
    Greeter greeter(1);
    int asked = 0;
    const Registered object("bundle_a", "greeter", std::make_shared<CountingObject>(&greeter, asked));
    ServiceLookup<Greeter> lookup("Greeter");
    EXPECT_EQ(&lookup.Get(), &greeter);
    EXPECT_EQ(&lookup.Get(), &greeter);
    EXPECT_EQ(&ServiceLookup<Greeter>("Greeter").Get(), &greeter);
    EXPECT_EQ(asked, 1);
}

TEST_F(ServiceLookupTest, AnAbsentServiceIsAnExceptionWithItsCode) {
    OtherService other;
    const Registered object("bundle_a", "other", other);
    ServiceLookup<Greeter> lookup("Greeter");
    try {
        lookup.Get();
        FAIL() << "found a service that isn't there";
    } catch (InterfaceNotExistException& missing) {
        EXPECT_EQ(missing.m_code, 0x41180004u);
        EXPECT_EQ(missing.m_line, 0);
        EXPECT_EQ(missing.m_message.str(), "");
    }
}

TEST_F(ServiceLookupTest, AnAbsentServiceIsFoundOnceItComesUp) {
    ServiceLookup<Greeter> lookup("Greeter");
    EXPECT_THROW(lookup.Get(), InterfaceNotExistException);
    Greeter greeter(1);
    const Registered object("bundle_a", "greeter", greeter);
    EXPECT_EQ(&lookup.Get(), &greeter);
}

TEST_F(ServiceLookupTest, ANamedBundleIsTheOnlyOneAsked) {
    Greeter one(1);
    Greeter two(2);
    const Registered first("bundle_a", "greeter", one);
    const Registered second("bundle_b", "greeter", two);
    EXPECT_EQ(ServiceLookup<Greeter>("Greeter", "bundle_b").Get().number, 2);
    EXPECT_THROW(ServiceLookup<Greeter>("Greeter elsewhere", "bundle_c").Get(), InterfaceNotExistException);
}

TEST_F(ServiceLookupTest, ANamedServiceObjectIsTheOnlyOneAsked) {
    Greeter one(1);
    Greeter two(2);
    const Registered first("bundle_a", "first", one);
    const Registered second("bundle_a", "second", two);
    EXPECT_EQ(ServiceLookup<Greeter>("Greeter", "bundle_a", "second").Get().number, 2);
    EXPECT_THROW(ServiceLookup<Greeter>("Greeter elsewhere", "bundle_a", "third").Get(),
                 InterfaceNotExistException);
}

TEST_F(ServiceLookupTest, AServiceObjectThatIsNotUpIsPassedOver) {
    int asked = 0;
    Greeter greeter(1);
    const Registered down("bundle_a", "greeter", std::make_shared<CountingObject>(nullptr, asked));
    const Registered up("bundle_b", "greeter", greeter);
    EXPECT_EQ(&ServiceLookup<Greeter>("Greeter").Get(), &greeter);
    EXPECT_EQ(asked, 1);
}

TEST_F(ServiceLookupDeathTest, AnyOtherExceptionInALookupEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Registered object("bundle_a", "greeter", std::make_shared<FailingObject<std::exception>>());
    EXPECT_EXIT(
        {
            std::set_terminate([] { _exit(42); });
            ServiceLookup<Greeter>("Greeter").Get();
        },
        ::testing::ExitedWithCode(42), "");
}

TEST_F(ServiceLookupDeathTest, AFailedAllocationInALookupEndsTheProcess) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const Registered object("bundle_a", "greeter", std::make_shared<FailingObject<std::bad_alloc>>());
    EXPECT_EXIT(
        {
            std::set_terminate([] { _exit(42); });
            ServiceLookup<Greeter>("Greeter").Get();
        },
        ::testing::ExitedWithCode(42), "");
}

}  // namespace
