#include "demo/agent/core/inventory.h"

#include <gmock/gmock.h>

#include "tests/support/temp_dir.h"

namespace qv_demo {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Pair;
using SetResult = Attributes::SetResult;

Element Named(const std::string& name, const std::string& label = "") {
    Element element;
    element.name = name;
    element.user_label = label;
    return element;
}

std::vector<std::string> Names(const Inventory& inventory, std::size_t first, std::size_t count) {
    std::vector<std::string> names;
    inventory.ForRange(first, count, [&](const Element& element) { names.push_back(element.name); });
    return names;
}

std::string ErrorOf(const std::string& contents) {
    const qv_test::TempDir dir;
    try {
        Inventory::Load(dir.Write("inventory.json", contents));
    } catch (const InventoryError& e) {
        return e.what();
    }
    return "no error";
}

TEST(Inventory, LoadsWhatTheFileSays) {
    const qv_test::TempDir dir;
    const Inventory inventory = Inventory::Load(dir.Write("inventory.json", R"({
        "ems": {"user_label": "Lab", "type": "Demo"},
        "elements": [{"name": "NE-1", "user_label": "one", "rates": [15, 20], "reachable": false,
                      "additional_info": {"Rack": "7"}}, {"name": "NE-2"}]})"));
    EXPECT_EQ(inventory.ems().user_label, "Lab");
    EXPECT_EQ(inventory.size(), 2U);
    bool seen = false;
    EXPECT_TRUE(inventory.Visit("NE-1", [&](const Element& element) {
        seen = true;
        EXPECT_EQ(element.user_label, "one");
        EXPECT_FALSE(element.reachable);
        EXPECT_TRUE(element.in_sync);
        EXPECT_THAT(element.rates, ElementsAre(15, 20));
        EXPECT_THAT(element.additional_info, ElementsAre(Pair("Rack", "7")));
    }));
    EXPECT_TRUE(seen);
}

TEST(Inventory, SaysWhatIsWrongAndWhere) {
    EXPECT_THAT(ErrorOf("{ not json"), AllOf(HasSubstr("inventory.json"), HasSubstr("not valid JSON")));
    EXPECT_THAT(ErrorOf("[]"), HasSubstr("\"elements\""));
    EXPECT_THAT(ErrorOf(R"({"elements": [{"name": "a"}, {}]})"),
                AllOf(HasSubstr("element 2"), HasSubstr("\"name\"")));
    EXPECT_THAT(ErrorOf(R"({"elements": ["x"]})"), HasSubstr("element 1 is not an object"));
    EXPECT_THAT(ErrorOf(R"({"elements": [{"name": "a"}, {"name": "a"}]})"), HasSubstr("twice"));
    EXPECT_THAT(ErrorOf(R"({"elements": [{"name": "a", "rates": [70000]}]})"), HasSubstr("\"rates\""));
    EXPECT_THAT(ErrorOf(R"({"elements": [{"name": "a", "owner": 5}]})"), HasSubstr("\"owner\""));
    EXPECT_THAT(ErrorOf(R"({"elements": [{"name": "a", "additional_info": [1]}]})"),
                HasSubstr("\"additional_info\""));
    EXPECT_THROW(Inventory::Load("/does/not/exist.json"), InventoryError);
}

TEST(Inventory, RangesStopAtTheEnd) {
    const Inventory inventory({}, {Named("a"), Named("b"), Named("c")});
    EXPECT_THAT(Names(inventory, 0, 2), ElementsAre("a", "b"));
    EXPECT_THAT(Names(inventory, 2, 2), ElementsAre("c"));
    EXPECT_THAT(Names(inventory, 3, 1), ElementsAre());
    EXPECT_THAT(Names(inventory, 99, static_cast<std::size_t>(-1)), ElementsAre());
}

TEST(Inventory, AUniqueLabelIsRefusedWhenAnotherElementHasIt) {
    Inventory inventory({}, {Named("a", "x"), Named("b", "y")});
    EXPECT_EQ(inventory.SetUserLabel("b", "x", true), Inventory::LabelResult::kInUse);
    EXPECT_EQ(inventory.SetUserLabel("a", "x", true), Inventory::LabelResult::kSet);
    EXPECT_EQ(inventory.SetUserLabel("b", "x", false), Inventory::LabelResult::kSet);
    EXPECT_EQ(inventory.SetUserLabel("c", "x", false), Inventory::LabelResult::kNotFound);
}

TEST(Inventory, ChangesStay) {
    Inventory inventory({}, {Named("a")});
    EXPECT_TRUE(inventory.Change("a", [](Element& element) { element.owner = "me"; }));
    EXPECT_FALSE(inventory.Change("b", [](Element&) { FAIL(); }));
    inventory.Visit("a", [](const Element& element) { EXPECT_EQ(element.owner, "me"); });
}

TEST(Inventory, MergeSetsAddsAndRemoves) {
    Texts info{{"Rack", "1"}, {"Room", "2"}};
    EXPECT_EQ(MergeInfo(info, {{"Rack", "9"}, {"Room", "-"}, {"New", "3"}, {"Never", "-"}}), SetResult::kSet);
    EXPECT_THAT(info, ElementsAre(Pair("New", "3"), Pair("Rack", "9")));
}

TEST(Inventory, AMergeKeepsToTheBoundsOrChangesNothing) {
    Texts info{{"Rack", "1"}};
    const std::string longest_name(Attributes::kLongestName, 'n');
    const std::string longest_text(Attributes::kLongestText, 't');
    EXPECT_EQ(MergeInfo(info, {{"New", "2"}, {longest_name + "n", ""}}), SetResult::kBadName);
    EXPECT_EQ(MergeInfo(info, {{"New", "2"}, {"", "2"}}), SetResult::kBadName);
    EXPECT_EQ(MergeInfo(info, {{"New", "2"}, {"Rack", longest_text + "t"}}), SetResult::kLongText);
    EXPECT_THAT(info, ElementsAre(Pair("Rack", "1")));
    EXPECT_EQ(MergeInfo(info, {{longest_name, longest_text}}), SetResult::kSet);

    TextPairs many;
    for (std::size_t i = 0; i < Attributes::kMost; ++i) {
        many.emplace_back(std::to_string(i), "");
    }
    EXPECT_EQ(MergeInfo(info, many), SetResult::kTooMany);
    EXPECT_EQ(info.size(), 2U);
    many.insert(many.begin(), {{"Rack", "-"}, {longest_name, "-"}});
    EXPECT_EQ(MergeInfo(info, many), SetResult::kSet);
    EXPECT_EQ(info.size(), Attributes::kMost);
}

TEST(Inventory, MoreInfoThanAnOssMayAddCanStillBeReplacedAndRemoved) {
    Texts info;
    for (std::size_t i = 0; i <= Attributes::kMost; ++i) {
        info.emplace(std::to_string(i), "of the file");
    }
    EXPECT_EQ(MergeInfo(info, {{"7", "new"}}), SetResult::kSet);
    EXPECT_EQ(MergeInfo(info, {{"New", "8"}}), SetResult::kTooMany);
    EXPECT_EQ(MergeInfo(info, {{"8", "-"}}), SetResult::kSet);
    EXPECT_EQ(info.size(), Attributes::kMost);
}

}  // namespace
}  // namespace qv_demo
