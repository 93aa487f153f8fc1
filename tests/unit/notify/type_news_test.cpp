#include "services/notify/delivery/type_news.h"

#include <gtest/gtest.h>

#include <initializer_list>
#include <string>

namespace {

using qv_notify::TypeNews;

CosNotification::EventTypeSeq Types(std::initializer_list<const char*> names) {
    CosNotification::EventTypeSeq types;
    types.length(static_cast<CORBA::ULong>(names.size()));
    CORBA::ULong next = 0;
    for (const char* name : names) {
        types[next].domain_name = CORBA::string_dup("tmf");
        types[next++].type_name = CORBA::string_dup(name);
    }
    return types;
}

std::string Named(const CosNotification::EventTypeSeq& types) {
    std::string names;
    for (CORBA::ULong i = 0; i < types.length(); ++i) {
        EXPECT_STREQ(types[i].domain_name.in(), "tmf");
        names += std::string(types[i].type_name.in()) + " ";
    }
    return names;
}

TEST(TypeNewsTest, HoldsWhatIsAddedAndRemoved) {
    TypeNews news;
    EXPECT_TRUE(news.Empty());
    news.Add(Types({"B", "A"}), Types({"C"}));
    EXPECT_EQ(Named(news.Added()), "A B ");
    EXPECT_EQ(Named(news.Removed()), "C ");
    news.Clear();
    EXPECT_TRUE(news.Empty());
}

TEST(TypeNewsTest, SeveralChangesAreOne) {
    TypeNews news;
    news.Add(Types({"A"}), Types({}));
    news.Add(Types({"B"}), Types({"C"}));
    news.Add(Types({"A"}), Types({}));
    EXPECT_EQ(Named(news.Added()), "A B ");
    EXPECT_EQ(Named(news.Removed()), "C ");
}

TEST(TypeNewsTest, WhatCameAndWentIsNoNews) {
    TypeNews news;
    news.Add(Types({"A"}), Types({"B"}));
    news.Add(Types({"B"}), Types({"A"}));
    EXPECT_TRUE(news.Empty());
}

TEST(TypeNewsTest, NewsComeBehindOlderOnes) {
    TypeNews news;
    news.Add(Types({"A"}), Types({"B"}));
    TypeNews later;
    later.Add(Types({"C"}), Types({"A"}));
    news.Add(later);
    EXPECT_EQ(Named(news.Added()), "C ");
    EXPECT_EQ(Named(news.Removed()), "B ");
}

}  // namespace
