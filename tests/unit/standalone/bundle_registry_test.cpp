#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/bundle_mgr.h"
#include "platform/log_service.h"
#include "platform/security_service.h"
#include "standalone/registry.h"
#include "tests/support/capturing_log_service.h"

namespace {

using NS_BUNDLEMGR1::Bundle;
using NS_BUNDLEMGR1::BundleMgr;
using NS_BUNDLEMGR1::CheckIFBuf;
using NS_BUNDLEMGR1::ServiceInterface;
using qv_standalone::MakeServiceObject;
using qv_standalone::ReplaceServiceObject;

class SomeService final : public ServiceInterface {};

/// Takes the service object out again, whatever the test's outcome.
struct Registered {
    Registered(const char* bundle, const char* name, ServiceInterface& service)
        : m_bundle(bundle), m_name(name) {
        ReplaceServiceObject(bundle, name, MakeServiceObject(service));
    }
    ~Registered() { ReplaceServiceObject(m_bundle, m_name, nullptr); }
    const char* m_bundle;
    const char* m_name;
};

}  // namespace

TEST(BundleRegistry, OffersALogServiceWithoutAnyPreparation) {
    Bundle* const bundle = BundleMgr::Instance()->GetBundle(qv_standalone::kPlatformBundle);
    ASSERT_NE(bundle, nullptr);
    EXPECT_EQ(bundle->GetName(), qv_standalone::kPlatformBundle);
    EXPECT_EQ(bundle->GetServiceObjects().count(qv_standalone::kLogService), 1U);
    EXPECT_EQ(BundleMgr::Instance()->GetBundles().at(qv_standalone::kPlatformBundle), bundle);
}

TEST(BundleRegistry, AnUnknownBundleIsNull) {
    EXPECT_EQ(BundleMgr::Instance()->GetBundle("no_such_bundle"), nullptr);
}

TEST(BundleRegistry, HandsOutTheInterfaceThatWasRegistered) {
    SomeService service;
    const Registered registered("bundle_a", "Some", service);
    const auto objects = BundleMgr::Instance()->GetBundle("bundle_a")->GetServiceObjects();
    ASSERT_EQ(objects.size(), 1U);
    ServiceInterface* const found = objects.at("Some")->GetInterface();
    EXPECT_EQ(dynamic_cast<SomeService*>(found), &service);
    EXPECT_EQ(dynamic_cast<NS_SECURITY_SERVICE1::SecurityIF*>(found), nullptr);
}

TEST(BundleRegistry, ReplacingReturnsWhatWasThere) {
    SomeService first;
    SomeService second;
    const auto firstObject = MakeServiceObject(first);
    EXPECT_EQ(ReplaceServiceObject("bundle_b", "Some", firstObject), nullptr);
    EXPECT_EQ(ReplaceServiceObject("bundle_b", "Some", MakeServiceObject(second)), firstObject);
    EXPECT_NE(ReplaceServiceObject("bundle_b", "Some", nullptr), nullptr);
    EXPECT_TRUE(BundleMgr::Instance()->GetBundle("bundle_b")->GetServiceObjects().empty());
    EXPECT_EQ(ReplaceServiceObject("bundle_b", "Some", nullptr), nullptr);
}

TEST(BundleRegistry, TheDefaultLogServiceReturnsAfterACapture) {
    const auto objectNow = [] {
        return BundleMgr::Instance()
            ->GetBundle(qv_standalone::kPlatformBundle)
            ->GetServiceObjects()[qv_standalone::kLogService];
    };
    auto* const before = objectNow();
    ASSERT_NE(before, nullptr);
    {
        qv_test::ScopedLogCapture capture;
        EXPECT_EQ(objectNow()->GetInterface(), &capture.service());
    }
    EXPECT_EQ(objectNow(), before);
}

TEST(InterfaceBuffers, OfOneNameAreOneObject) {
    EXPECT_EQ(&CheckIFBuf("one"), &CheckIFBuf("one"));
    EXPECT_NE(&CheckIFBuf("one"), &CheckIFBuf("two"));
}

TEST(InterfaceBuffers, KeepTheFirstInterface) {
    SomeService first;
    SomeService second;
    auto& buffer = CheckIFBuf("keeps_first");
    EXPECT_EQ(buffer.Front(), nullptr);
    buffer.Append(&first);
    buffer.Append(&second);
    EXPECT_EQ(buffer.Front(), &first);
    ReplaceServiceObject("bundle_c", "Unrelated", nullptr);
}

TEST(InterfaceBuffers, ForgetWhenAServiceObjectChanges) {
    SomeService service;
    auto& buffer = CheckIFBuf("forgets");
    buffer.Append(&service);
    ReplaceServiceObject("bundle_d", "Some", MakeServiceObject(service));
    EXPECT_EQ(buffer.Front(), nullptr);
    buffer.Append(&service);
    ReplaceServiceObject("bundle_d", "Some", nullptr);
    EXPECT_EQ(buffer.Front(), nullptr);
}

TEST(BundleRegistry, TheProcessLockIsRecursive) {
    const std::lock_guard<std::recursive_mutex> outer(NS_BUNDLEMGR1::g_actualmutex);
    EXPECT_NE(BundleMgr::Instance()->GetBundle(qv_standalone::kPlatformBundle), nullptr);
    EXPECT_EQ(CheckIFBuf("under_the_lock").Front(), nullptr);
}

TEST(BundleRegistry, TellsTheRunState) {
    EXPECT_NE(BundleMgr::Instance()->GetRunState(), BundleMgr::kStopping);
    qv_standalone::SetRunState(BundleMgr::kStopping);
    EXPECT_EQ(BundleMgr::Instance()->GetRunState(), 2);
    qv_standalone::SetRunState(0);
    EXPECT_EQ(BundleMgr::Instance()->GetRunState(), 0);
}

TEST(BundleRegistry, BearsLookupsWhileServicesChange) {
    SomeService service;
    std::vector<std::thread> threads;
    std::atomic<int> wrong{0};
    for (int i = 0; i < 3; ++i) {
        threads.emplace_back([&] {
            for (int n = 0; n < 2000; ++n) {
                std::lock_guard<std::recursive_mutex> guard(NS_BUNDLEMGR1::g_actualmutex);
                for (const auto& [name, bundle] : BundleMgr::Instance()->GetBundles()) {
                    wrong += bundle->GetName() == name ? 0 : 1;
                    wrong += bundle->GetServiceObjects().count("") == 0 ? 0 : 1;
                }
                CheckIFBuf("busy").Append(&service);
            }
        });
    }
    for (int n = 0; n < 500; ++n) {
        ReplaceServiceObject("bundle_e", "Some", MakeServiceObject(service));
        ReplaceServiceObject("bundle_e", "Some", nullptr);
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    EXPECT_EQ(wrong, 0);
}
