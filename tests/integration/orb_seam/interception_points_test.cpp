// Which interception points of which interceptors are called, in which order, and what the client sees when
// they or the servant raise (CORBA 3.0, 21.3.8 and 21.3.9).

#include "both_sides.h"
#include "tests/support/wait_for.h"

namespace {

using namespace qv_test;
using PortableInterceptor::ForwardRequest;
using Info = Probe::Info;

[[noreturn]] void Refuse(Info) {
    throw CORBA::NO_PERMISSION(9, CORBA::COMPLETED_NO);
}
constexpr char kRefusal[] = "NO_PERMISSION 0x00000009 NO";
constexpr char kUnknown[] = "UNKNOWN 0x4f4d0001 MAYBE";

class InterceptionPointsTest : public BothSidesTest {
  protected:
    InterceptionPointsTest() {
        server.servant.on_call = [this](const std::string&) { server.events.Add("servant"); };
    }

    Strings Happened() { return server.events.All(); }
};

INSTANTIATE_TEST_SUITE_P(From, InterceptionPointsTest, ::testing::Values(true, false), SideName);

TEST_P(InterceptionPointsTest, SuccessPassesInOrderAndBackInReverse) {
    EXPECT_EQ(Call("echo", "hello"), "hello");
    EXPECT_EQ(Happened(), (Strings{"A.contexts", "B.contexts", "A.request", "B.request", "servant", "B.reply",
                                   "A.reply"}));
}

TEST_P(InterceptionPointsTest, ObjectOperationsPassToo) {
    const Strings points{"A.contexts", "B.contexts", "A.request", "B.request", "B.reply", "A.reply"};
    EXPECT_EQ(Call("_is_a", "IDL:Seam/Stranger:1.0"), "no");
    EXPECT_EQ(Happened(), points);
    server.events.Clear();
    EXPECT_EQ(Call("_non_existent"), "there");
    EXPECT_EQ(Happened(), points);
}

TEST_P(InterceptionPointsTest, RaisedAtTheFirstPointOnlyStartedOnesEnd) {
    server.b->contexts = Refuse;
    EXPECT_EQ(Call("echo", "hello"), kRefusal);
    EXPECT_EQ(Happened(), (Strings{"A.contexts", "B.contexts", "A.exception"}));
}

TEST_P(InterceptionPointsTest, RaisedByTheOuterAtTheFirstPointNobodyEnds) {
    server.a->contexts = Refuse;
    EXPECT_EQ(Call("echo", "hello"), kRefusal);
    EXPECT_EQ(Happened(), Strings{"A.contexts"});
}

TEST_P(InterceptionPointsTest, RaisedAtTheSecondPointAllEnd) {
    server.a->request = Refuse;
    EXPECT_EQ(Call("echo", "hello"), kRefusal);
    EXPECT_EQ(Happened(), (Strings{"A.contexts", "B.contexts", "A.request", "B.exception", "A.exception"}));
}

TEST_P(InterceptionPointsTest, UserExceptionIsSeenAndExtracted) {
    std::string reason;
    PortableInterceptor::ReplyStatus status = PortableInterceptor::UNKNOWN;
    server.a->exception = [&](Info info) {
        status = info->reply_status();
        const CORBA::Any_var any = info->sending_exception();
        const Seam::Refused* refused = nullptr;
        if (any.in() >>= refused) {
            reason = refused->reason.in();
        }
    };
    EXPECT_EQ(Call("fail", "refused"), "Refused as asked 5");
    EXPECT_EQ(status, PortableInterceptor::USER_EXCEPTION);
    EXPECT_EQ(reason, "as asked");
    EXPECT_EQ(Happened(), (Strings{"A.contexts", "B.contexts", "A.request", "B.request", "servant",
                                   "B.exception", "A.exception"}));
}

TEST_P(InterceptionPointsTest, SystemExceptionIsSeenAndExtracted) {
    CORBA::ULong minor = 0;
    PortableInterceptor::ReplyStatus status = PortableInterceptor::UNKNOWN;
    server.b->exception = [&](Info info) {
        status = info->reply_status();
        const CORBA::Any_var any = info->sending_exception();
        const CORBA::BAD_PARAM* ex = nullptr;
        if (any.in() >>= ex) {
            minor = ex->minor();
        }
    };
    EXPECT_EQ(Call("fail", "system"), "BAD_PARAM 0x0000004d YES");
    EXPECT_EQ(status, PortableInterceptor::SYSTEM_EXCEPTION);
    EXPECT_EQ(minor, 77u);
}

TEST_P(InterceptionPointsTest, RaisedBySendReplyTheOuterSeesTheException) {
    server.b->reply = Refuse;
    EXPECT_EQ(Call("echo", "hello"), kRefusal);
    EXPECT_EQ(Happened(), (Strings{"A.contexts", "B.contexts", "A.request", "B.request", "servant", "B.reply",
                                   "A.exception"}));
}

TEST_P(InterceptionPointsTest, SendExceptionMayPutAnotherExceptionInPlace) {
    server.b->exception = Refuse;
    std::string seen;
    server.a->exception = [&](Info info) {
        const CORBA::Any_var any = info->sending_exception();
        const CORBA::NO_PERMISSION* ex = nullptr;
        seen = (any.in() >>= ex) ? ex->_name() : "something else";
    };
    EXPECT_EQ(Call("fail", "refused"), kRefusal);
    EXPECT_EQ(seen, "NO_PERMISSION");
}

TEST_P(InterceptionPointsTest, WhatIsNoSystemExceptionOfAPointBecomesUnknown) {
    server.a->request = [](Info) { throw std::runtime_error("not of CORBA"); };
    EXPECT_EQ(Call("echo", "hello"), "UNKNOWN 0x00000000 MAYBE");
    server.a->request = [](Info) { throw Seam::Refused("no business here", 1); };
    EXPECT_EQ(Call("fail", "refused"), kUnknown);
    server.a->request = [](Info) { throw std::bad_alloc(); };
    EXPECT_EQ(Call("echo", "hello"), "NO_MEMORY 0x00000000 MAYBE");
}

TEST_P(InterceptionPointsTest, WhatTheServantMustNotRaiseBecomesUnknown) {
    EXPECT_EQ(Call("fail", "std"), "UNKNOWN 0x00000000 MAYBE");
    EXPECT_EQ(Call("fail", "int"), "UNKNOWN 0x00000000 MAYBE");
    EXPECT_EQ(Call("fail", "unlisted"), kUnknown);
    EXPECT_EQ(Call("fail", "memory"), "NO_MEMORY 0x00000000 MAYBE");
    EXPECT_EQ(Call("echo", "still there"), "still there");
}

TEST_P(InterceptionPointsTest, UndeclaredUserExceptionIsSeenAsUnknown) {
    std::string seen;
    PortableInterceptor::ReplyStatus status = PortableInterceptor::SUCCESSFUL;
    server.a->exception = [&](Info info) {
        status = info->reply_status();
        const CORBA::Any_var any = info->sending_exception();
        const CORBA::UNKNOWN* ex = nullptr;
        seen = (any.in() >>= ex) ? ex->_name() : "something else";
    };
    Call("fail", "unlisted");
    EXPECT_EQ(seen, "UNKNOWN");
    EXPECT_EQ(status, PortableInterceptor::SYSTEM_EXCEPTION);
}

TEST_P(InterceptionPointsTest, OnewayEndsInSendReplyWithoutExpectingAnAnswer) {
    bool expected = true;
    Messaging::SyncScope scope = Messaging::SYNC_WITH_TARGET;
    server.a->request = [&](Info info) {
        expected = info->response_expected();
        scope = info->sync_scope();
    };
    EXPECT_EQ(Call("tell", "hello"), "done");
    ASSERT_TRUE(WaitFor([this] { return server.events.Contains("A.reply"); }));
    EXPECT_FALSE(expected);
    EXPECT_LE(scope, Messaging::SYNC_WITH_TRANSPORT);
    EXPECT_EQ(Happened(), (Strings{"A.contexts", "B.contexts", "A.request", "B.request", "servant", "B.reply",
                                   "A.reply"}));
}

TEST_P(InterceptionPointsTest, NestedCollocatedCallPassesInsideTheOuterOne) {
    server.servant.on_call = [this](const std::string& operation) {
        server.events.Add("servant " + operation);
        if (operation == "inherited") {
            EXPECT_EQ(server.Collocated("echo", "inner"), "inner");
        }
    };
    EXPECT_EQ(Call("inherited", "outer"), "inherited outer");
    EXPECT_EQ(Happened(), (Strings{"A.contexts", "B.contexts", "A.request", "B.request", "servant inherited",
                                   "A.contexts", "B.contexts", "A.request", "B.request", "servant echo",
                                   "B.reply", "A.reply", "B.reply", "A.reply"}));
}

/// The object that requests are sent on to, and what the points of those that were sent on saw.
class ForwardTest : public InterceptionPointsTest {
  protected:
    ForwardTest() {
        server.elsewhere.on_call = [this](const std::string&) { server.events.Add("elsewhere"); };
        server.a->other = [this](Info info) {
            status = info->reply_status();
            const CORBA::Object_var reference = info->forward_reference();
            right_reference = reference->_is_equivalent(server.there.in());
        };
    }

    /// The action of a point: sends on what is for the first object.
    Probe::Action SendOn() {
        return [this](Info) {
            if (!forwarded.exchange(true)) {
                throw ForwardRequest(server.there.in());
            }
        };
    }
    void ExpectSentOn() {
        EXPECT_EQ(status, PortableInterceptor::LOCATION_FORWARD);
        EXPECT_TRUE(right_reference);
        EXPECT_TRUE(server.events.Contains("elsewhere"));
    }

    std::atomic<bool> forwarded{false};
    PortableInterceptor::ReplyStatus status = PortableInterceptor::UNKNOWN;
    bool right_reference = false;
};

INSTANTIATE_TEST_SUITE_P(From, ForwardTest, ::testing::Values(true, false), SideName);

const Strings kServedElsewhere{"A.contexts", "B.contexts", "A.request", "B.request",
                               "elsewhere",  "B.reply",    "A.reply"};

Strings Joined(Strings first, const Strings& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

TEST_P(ForwardTest, FromTheFirstPoint) {
    server.b->contexts = SendOn();
    EXPECT_EQ(Call("title"), "elsewhere");
    ExpectSentOn();
    EXPECT_EQ(Happened(), Joined({"A.contexts", "B.contexts", "A.other"}, kServedElsewhere));
}

TEST_P(ForwardTest, FromTheSecondPoint) {
    server.a->request = SendOn();
    EXPECT_EQ(Call("title"), "elsewhere");
    ExpectSentOn();
    EXPECT_EQ(Happened(),
              Joined({"A.contexts", "B.contexts", "A.request", "B.other", "A.other"}, kServedElsewhere));
}

TEST_P(ForwardTest, FromSendException) {
    server.servant.on_call = [](const std::string&) { throw CORBA::TRANSIENT(1, CORBA::COMPLETED_NO); };
    server.b->exception = SendOn();
    EXPECT_EQ(Call("title"), "elsewhere");
    ExpectSentOn();
    EXPECT_EQ(Happened(),
              Joined({"A.contexts", "B.contexts", "A.request", "B.request", "B.exception", "A.other"},
                     kServedElsewhere));
}

TEST_P(ForwardTest, FromSendOtherToYetAnotherObject) {
    const CORBA::Object_var gone = server.root()->create_reference("IDL:Seam/Target:1.0");
    server.a->request = [&](Info) {
        if (!forwarded) {
            throw ForwardRequest(gone.in());
        }
    };
    server.b->other = SendOn();
    EXPECT_EQ(Call("title"), "elsewhere");
    ExpectSentOn();
}

TEST_P(ForwardTest, FromSendReplyItIsUnknown) {
    server.b->reply = SendOn();
    EXPECT_EQ(Call("title"), kUnknown);
    EXPECT_FALSE(server.events.Contains("A.other"));
    EXPECT_TRUE(server.events.Contains("A.exception"));
}

TEST(WithoutInterceptorsTest, RequestsAreServed) {
    SeamServer::Options options;
    options.intercept = false;
    SeamServer server(options);
    EXPECT_EQ(server.Remote("echo", "far"), "far");
    EXPECT_EQ(server.Collocated("echo", "near"), "near");
    EXPECT_EQ(server.Remote("fail", "refused"), "Refused as asked 5");
    EXPECT_EQ(server.Remote("null_result"), "BAD_PARAM 0x00000000 YES");
    EXPECT_EQ(server.Collocated("null_result"), "BAD_PARAM 0x00000000 YES");
    EXPECT_EQ(server.events.All(), Strings{});
}

}  // namespace
