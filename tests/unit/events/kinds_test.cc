#include <zel/events/kinds.h>

#include <set>

#include <gtest/gtest.h>

namespace {

TEST(EventKinds, EveryKindStandsOnceInTheTable) {
    std::set<std::string_view> names;
    std::set<std::string_view> colours;
    for (size_t i = 0; i < ZEL::kEventKinds; ++i) {
        const ZEL::EventKindInfo& info = ZEL::eventKinds().at(i);
        EXPECT_EQ(indexOf(info.kind), i);
        EXPECT_EQ(ZEL::eventKindByName(info.name), info.kind);
        EXPECT_FALSE(info.unit.empty() || info.meaning.empty()) << info.name;
        EXPECT_TRUE(names.insert(info.name).second) << info.name;
        EXPECT_TRUE(info.colour.size() == 7 && colours.insert(info.colour).second) << info.name;
    }
    EXPECT_FALSE(ZEL::eventKindByName("purple"));
}

}  // namespace
