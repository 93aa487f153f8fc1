// What stands in messages: service contexts, and rubbish.

#include <gtest/gtest.h>

#include <random>

#include "calls.h"
#include "giop_client.h"
#include "seam_server.h"
#include "tests/support/wait_for.h"

namespace {

using namespace qv_test;
using Info = Probe::Info;

constexpr CORBA::ULong kOurs = 0x51560001;

IOP::ServiceContext Context(CORBA::ULong id, const std::string& data) {
    IOP::ServiceContext context;
    context.context_id = id;
    context.context_data.length(static_cast<CORBA::ULong>(data.size()));
    std::copy(data.begin(), data.end(), context.context_data.get_buffer());
    return context;
}

std::string Data(IOP::ServiceContext* owned) {
    const std::unique_ptr<IOP::ServiceContext> context(owned);
    return std::string(reinterpret_cast<const char*>(context->context_data.get_buffer()),
                       context->context_data.length());
}

template <class Function>
std::string Failure(Function function) {
    try {
        function();
        return "none";
    } catch (const CORBA::SystemException& ex) {
        return Describe(ex);
    }
}

class ServiceContextTest : public ::testing::Test {
  protected:
    GiopReply Request(const std::string& operation, const ContextList& contexts = {}) {
        TakeTurns();
        connection.Send(GiopRequest(key, operation, ++m_id, contexts));
        const auto reply = ReadReply(connection);
        TakeTurns();
        if (!reply) {
            throw std::runtime_error("no reply");
        }
        EXPECT_EQ(reply->request_id, m_id);
        return *reply;
    }

    SeamServer server;
    const std::string key = ObjectKey(server.ior());
    RawConnection connection{server.port()};

  private:
    std::uint32_t m_id = 40;
};

TEST_F(ServiceContextTest, OfTheRequestIsFound) {
    std::string contexts_point;
    std::string reply_point;
    std::string absent;
    CORBA::ULong id = 0;
    server.a->contexts = [&](Info info) {
        contexts_point = Data(info->get_request_service_context(kOurs));
        absent = Failure([&] { Data(info->get_request_service_context(kOurs + 1)); });
        id = info->request_id();
    };
    server.a->reply = [&](Info info) { reply_point = Data(info->get_request_service_context(kOurs)); };
    EXPECT_EQ(Request("_get_title", {{7, "other"}, {kOurs, "mark"}}).status, 0u);
    EXPECT_EQ(contexts_point, "mark");
    EXPECT_EQ(reply_point, "mark");
    EXPECT_EQ(absent, "BAD_PARAM 0x4f4d001a NO");
    EXPECT_EQ(id, 41u);
}

TEST_F(ServiceContextTest, OfTheReplyReachesTheClient) {
    std::string duplicate;
    std::string own;
    server.b->contexts = [](Info info) { info->add_reply_service_context(Context(kOurs, "first"), false); };
    server.b->request = [&](Info info) {
        duplicate = Failure([&] { info->add_reply_service_context(Context(kOurs, "second"), false); });
        info->add_reply_service_context(Context(kOurs + 1, "x"), false);
        info->add_reply_service_context(Context(kOurs + 1, "replaced"), true);
    };
    server.a->reply = [&](Info info) { own = Data(info->get_reply_service_context(kOurs)); };
    const ContextList expected{{kOurs, "first"}, {kOurs + 1, "replaced"}};
    EXPECT_EQ(Request("_get_title").contexts, expected);
    EXPECT_EQ(duplicate, "BAD_INV_ORDER 0x4f4d000f NO");
    EXPECT_EQ(own, "first");
}

TEST_F(ServiceContextTest, OfAnExceptionReachesTheClientToo) {
    server.a->exception = [](Info info) { info->add_reply_service_context(Context(kOurs, "why"), false); };
    server.b->request = [](Info) { throw CORBA::NO_PERMISSION(1, CORBA::COMPLETED_NO); };
    const GiopReply reply = Request("_get_title");
    EXPECT_EQ(reply.status, 2u);
    EXPECT_EQ(reply.contexts, (ContextList{{kOurs, "why"}}));
}

TEST_F(ServiceContextTest, OfAnOnewayOrAForwardDoesNotTurnUpInTheNextReply) {
    server.a->contexts = [](Info info) { info->add_reply_service_context(Context(kOurs, "old"), false); };
    connection.Send(GiopRequest(key, "_get_title", 1, {}, false));
    ASSERT_TRUE(WaitFor([this] { return server.events.Contains("A.reply"); }));
    server.b->contexts = [this](Info) { throw PortableInterceptor::ForwardRequest(server.there.in()); };
    EXPECT_EQ(Request("_get_title").status, 3u);
    server.a->contexts = nullptr;
    server.b->contexts = nullptr;
    EXPECT_EQ(Request("_get_title").contexts, ContextList{});
}

class RubbishTest : public ::testing::Test {
  protected:
    void ExpectStillServing() { EXPECT_EQ(server.Remote("title"), "target"); }

    SeamServer server;
};

TEST_F(RubbishTest, RandomBytes) {
    std::mt19937 random(20240229);
    for (int i = 0; i < 50; ++i) {
        std::string bytes(random() % 4000, '\0');
        for (char& byte : bytes) {
            byte = static_cast<char>(random());
        }
        RawConnection(server.port()).Send(bytes);
    }
    ExpectStillServing();
}

TEST_F(RubbishTest, RequestWithRandomChanges) {
    const std::string good = GiopRequest(ObjectKey(server.ior()), "_get_title", 1, {{7, "context"}});
    std::mt19937 random(20240301);
    for (int i = 0; i < 300; ++i) {
        std::string bytes = good;
        for (int change = 0; change < 3; ++change) {
            bytes[random() % bytes.size()] = static_cast<char>(random());
        }
        RawConnection(server.port()).Send(bytes);
    }
    ExpectStillServing();
}

TEST_F(RubbishTest, EveryBeginningOfARequest) {
    const std::string good = GiopRequest(ObjectKey(server.ior()), "_get_title", 1, {});
    for (std::size_t length = 0; length < good.size(); ++length) {
        RawConnection(server.port()).Send(good.substr(0, length));
    }
    ExpectStillServing();
}

TEST_F(RubbishTest, LengthsThatNoMessageHas) {
    for (const char size : {'\x7f', '\xff'}) {
        std::string header("GIOP\1\0\1\0", 8);
        header.append(4, size);
        RawConnection connection(server.port());
        connection.Send(header + std::string(1000, 'x'));
        ExpectStillServing();
    }
    RawConnection half(server.port());
    half.Send("GIOP\1");
    ExpectStillServing();
}

}  // namespace
