#include <kinlet/Units.h>

#include <gtest/gtest.h>

#include <limits>

namespace {

using Rational = boost::rational<std::int64_t>;
constexpr std::int64_t kMin = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t kMax = std::numeric_limits<std::int64_t>::max();

TEST(Time, MillisecondsAreExactAndRoundTowardsZero)
{
    struct Case {
        kinlet::Time time;
        std::int64_t milliseconds;
    };
    const Case cases[] = {
        {{}, 0},
        {{1270080000000, kinlet::kTicksPerSecond}, 5000},
        {{254016000000 * 3 - 1, kinlet::kTicksPerSecond}, 2999},
        {{-1999, 1000000}, -1},
        {{5, 0}, 0},
        {{5, -1}, 0},
        {{kMax - 1, kMax}, 999},
        {{kMax / 2, kMax}, 499},
        {{kMax, 1000}, kMax},
        {{kMax, 1}, kMax},
        {{kMax / 1000, 1}, kMax / 1000 * 1000},
        {{kMin, 1}, -kMax},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(c.time.ToMilliseconds(), c.milliseconds) << c.time.value << " / " << c.time.scale;
    }
}

TEST(FrameRate, ConvertsToAndFromFramesASecond)
{
    for (const Rational& rate : {Rational(30000, 1001), Rational(24), Rational(24000, 1001), Rational(48000),
                                 Rational(44100), Rational(1, 2), Rational(120)}) {
        const auto ticks = kinlet::FrameRate::FromRational(rate);
        ASSERT_TRUE(ticks) << rate;
        EXPECT_EQ(ticks->ToRational(), rate);
    }
    EXPECT_EQ(kinlet::FrameRate::FromRational({30000, 1001})->ticksPerFrame, 8475667200);
    for (const Rational& rate : {Rational(0), Rational(-25), Rational(1000003), Rational(1, kMax)}) {
        EXPECT_FALSE(kinlet::FrameRate::FromRational(rate)) << rate;
    }
    EXPECT_EQ(kinlet::FrameRate{0}.ToRational(), Rational(0));
    EXPECT_EQ(kinlet::FrameRate{-1}.ToRational(), Rational(0));
}

TEST(PixelAspectRatio, KeepsItsNumbersAndConverts)
{
    EXPECT_EQ((kinlet::PixelAspectRatio{10, 11}.ToRational()), Rational(10, 11));
    EXPECT_EQ((kinlet::PixelAspectRatio{2, 2}.ToRational()), Rational(1));
    EXPECT_NE((kinlet::PixelAspectRatio{2, 2}), (kinlet::PixelAspectRatio{1, 1}));
    EXPECT_EQ((kinlet::PixelAspectRatio{10, 0}.ToRational()), Rational(1));
    EXPECT_EQ((kinlet::PixelAspectRatio{0, 10}.ToRational()), Rational(1));
    EXPECT_EQ(kinlet::PixelAspectRatio::FromRational({20, 22}), (kinlet::PixelAspectRatio{10, 11}));
    for (const Rational& ratio : {Rational(0), Rational(-1, 2), Rational(1LL << 32), Rational(1, 1LL << 32)}) {
        EXPECT_FALSE(kinlet::PixelAspectRatio::FromRational(ratio)) << ratio;
    }
}

} // namespace
