#include "judges/either.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using ZELJudges::Either;
using ZELJudges::Stretch;

Stretch there(double start_s, double end_s, float value = 1.0F) {
    return {start_s, end_s, true, value, 0.5F};
}
Stretch gone(double start_s, double end_s) {
    return {start_s, end_s, false, 0.0F, 0.5F};
}
auto is(const Stretch& stretch) {
    using testing::Field;
    return testing::AllOf(Field(&Stretch::start_s, stretch.start_s), Field(&Stretch::end_s, stretch.end_s),
                          Field(&Stretch::present, stretch.present), Field(&Stretch::value, stretch.value));
}
std::vector<Stretch> some(std::initializer_list<Stretch> stretches) {
    return stretches;
}

TEST(Either, FaultIsTherAsSoonAsOneTellsAndGoneWhenBothDo) {
    Either either;
    EXPECT_THAT(either.feed(some({there(0.0, 1.0)}), {}), ElementsAre(is(there(0.0, 1.0))));
    EXPECT_THAT(either.feed(some({gone(1.0, 2.0), there(2.0, 2.5)}), {}), IsEmpty());
    EXPECT_THAT(either.feed({}, some({gone(0.0, 1.5)})), ElementsAre(is(gone(1.0, 1.5))));
    EXPECT_THAT(either.feed({}, some({there(1.5, 1.8, 2.0F), gone(1.8, 3.0)})),
                ElementsAre(is(there(1.5, 1.8, 2.0F)), is(gone(1.8, 2.0)), is(there(2.0, 2.5))));
    EXPECT_THAT(either.finish(some({gone(2.5, 4.0)}), {}),
                ElementsAre(is(gone(2.5, 3.0)), is(gone(3.0, 4.0))));
    EXPECT_THAT(either.feed(some({there(0.0, 1.0)}), {}), ElementsAre(is(there(0.0, 1.0)))) << "begins anew";
}

TEST(Either, StretchWithoutFramesIsLeftOut) {
    Either either;
    EXPECT_THAT(either.feed(some({gone(0.0, 1.0), there(5.0, 6.0)}), some({gone(0.0, 1.0), gone(5.0, 5.5)})),
                ElementsAre(is(gone(0.0, 1.0)), is(there(5.0, 6.0))));
}

}  // namespace
