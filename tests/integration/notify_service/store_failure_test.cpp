// A store that can't be written, or holds what belongs to nothing: what becomes of channels and filters.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sqlite3.h>

#include <atomic>
#include <thread>

#include "tests/integration/notify_service/channel_run.h"

namespace {

using namespace qv_test;
using testing::IsEmpty;

/// The file of a service's store, beside the service.
class StoreFile {
  public:
    explicit StoreFile(const std::string& path) {
        EXPECT_EQ(sqlite3_open(path.c_str(), &m_database), SQLITE_OK);
        sqlite3_busy_timeout(m_database, 10000);
    }
    ~StoreFile() { sqlite3_close(m_database); }
    StoreFile(const StoreFile&) = delete;
    StoreFile& operator=(const StoreFile&) = delete;

    /// The first column of all rows.
    std::vector<std::string> Execute(const std::string& sql) {
        std::vector<std::string> rows;
        const auto take = [](void* to, int, char** values, char**) {
            static_cast<std::vector<std::string>*>(to)->emplace_back(values[0]);
            return 0;
        };
        EXPECT_EQ(sqlite3_exec(m_database, sql.c_str(), take, &rows, nullptr), SQLITE_OK)
            << sqlite3_errmsg(m_database);
        return rows;
    }
    std::vector<std::string> Objects() { return Execute("SELECT path FROM objects ORDER BY path"); }
    /// Triggers stand for a full disk.
    void Refuse(const std::string& name, const std::string& what) {
        Execute("CREATE TRIGGER " + name + " BEFORE " + what +
                " BEGIN SELECT RAISE(ABORT, 'told to fail'); END");
    }
    void Allow(const std::string& name) { Execute("DROP TRIGGER " + name); }

  private:
    sqlite3* m_database = nullptr;
};

class StoreFailure : public testing::Test {
  protected:
    std::size_t Channels() const {
        const CosNotifyChannelAdmin::ChannelIDSeq_var ids = factory->get_all_channels();
        return ids->length();
    }

    NotifyServiceRun service;
    CosNotifyChannelAdmin::EventChannelFactory_var factory = FactoryAt(service.Corbaloc());
    StoreFile file{service.StoreFile()};
};

TEST_F(StoreFailure, AChannelThatCantBeMadeWhollyIsTakenBack) {
    file.Refuse("full", "INSERT ON objects WHEN NEW.path LIKE '%/sa0'");
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(MakeChannel(factory.in(), true), CORBA::NO_RESOURCES);
        EXPECT_THAT(file.Objects(), IsEmpty());
    }
    EXPECT_EQ(Channels(), 0U);
    file.Allow("full");
    const Channel channel(MakeChannel(factory.in(), true));
    EXPECT_EQ(Channels(), 1U);
    EXPECT_EQ(file.Objects().size(), 3U);
}

TEST_F(StoreFailure, AChannelThatCantBeTakenBackEitherIsSoLater) {
    file.Refuse("full", "INSERT ON objects WHEN NEW.path LIKE '%/sa0'");
    file.Refuse("stuck", "DELETE ON objects");
    for (int i = 0; i < 3; ++i) {
        EXPECT_THROW(MakeChannel(factory.in(), true), CORBA::NO_RESOURCES);
        EXPECT_EQ(file.Objects().size(), 2U) << "no more of them with each try";
    }
    file.Allow("full");
    file.Allow("stuck");
    const Channel channel(MakeChannel(factory.in(), true));
    EXPECT_EQ(Channels(), 1U);
    EXPECT_EQ(file.Objects().size(), 3U);
}

TEST_F(StoreFailure, FiltersWithoutTheirChannelAreLeftBehind) {
    const Channel channel(service, true);
    const CosNotifyFilter::FilterFactory_var filters = channel->default_filter_factory();
    const CosNotifyFilter::Filter_var filter = filters->create_filter("EXTENDED_TCL");
    EXPECT_EQ(service.Stop(), 0);
    const std::vector<std::string> before = file.Objects();
    file.Execute(
        "INSERT INTO objects(path, description) SELECT 'c777/f888', description FROM objects "
        "WHERE path LIKE '%/f%'");
    service.Start();
    EXPECT_EQ(file.Objects(), before);
}

TEST_F(StoreFailure, WhatIsChangedWhileAChannelEndsEndsWithIt) {
    for (int round = 0; round < 10; ++round) {
        const Channel channel(service, true);
        const CosNotifyFilter::FilterFactory_var filters = channel->default_filter_factory();
        const CosNotifyFilter::Filter_var changed = filters->create_filter("EXTENDED_TCL");
        std::atomic<int> made{0};
        const auto until_it_ends = [&](const std::function<void()>& work) {
            try {
                while (true) {
                    work();
                    ++made;
                }
            } catch (const CORBA::OBJECT_NOT_EXIST&) {
                // That is the end.
            }
        };
        std::vector<std::thread> clients;
        for (int i = 0; i < 2; ++i) {
            clients.emplace_back(until_it_ends, [&] {
                const CosNotifyFilter::Filter_var filter = filters->create_filter("EXTENDED_TCL");
            });
            clients.emplace_back(until_it_ends, [&] { changed->remove_all_constraints(); });
        }
        EXPECT_TRUE(WaitFor([&] { return made >= 10; }));
        channel->destroy();
        for (std::thread& client : clients) {
            client.join();
        }
        ASSERT_THAT(file.Objects(), IsEmpty());
    }
}

}  // namespace
