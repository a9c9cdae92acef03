#include "engine/numbers.h"

#include <bit>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace varo::engine;

TEST(Numbers, AreWrittenAndRoundedEvenWhereNoFormulaDoes) {
    using Limits = std::numeric_limits<double>;
    EXPECT_EQ(formatFixed(Limits::infinity(), 2), "inf");
    EXPECT_EQ(formatFixed(-Limits::infinity(), 2), "-inf");
    EXPECT_EQ(formatFixed(Limits::quiet_NaN(), 2), "nan");
    EXPECT_EQ(formatFixed(3.5, -2), "4");
    EXPECT_EQ(formatFixed(1, std::numeric_limits<int>::max()).size(), 1002U);
    EXPECT_EQ(formatFixed(Limits::max(), 0).size(), 309U);
    EXPECT_EQ(roundDecimals(Limits::max(), 0), Limits::max());
}

TEST(Numbers, ParseNumberReadsANumberAndNothingElse) {
    for (const std::string_view text :
         {"",     " ",     ".",      "-",   "+",  "e5",    "1e",  "1e+", "1.2.3",
          "1,5",  "--1",   "- 1",    "1 2", "1x", "x1",    "inf", "nan", "infinity",
          "0x10", "1e999", "-1e999", "１",  "1f", "1_000", "(1)"}) {
        EXPECT_EQ(parseNumber(text), std::nullopt) << text;
    }
    EXPECT_EQ(parseNumber(std::string_view("1\0", 2)), std::nullopt);
}

TEST(Numbers, LeadingNumberTakesTheLongestBeginning) {
    const std::pair<std::string_view, double> cases[] = {
        {"12.5mm", 12.5}, {"  -3 4", -3}, {"1e5x", 1e5}, {"1ex", 1},  {"1.2.3", 1.2},
        {"", 0},          {"abc", 0},     {"-", 0},      {"1e999", 0}};
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(leadingNumber(text), expected) << text;
    }
}

TEST(Numbers, EveryNumberReadsBackFromItsShortestText) {
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 20'000; ++i) {
        const auto value = std::bit_cast<double>(random());
        if (value - value == 0) {
            ASSERT_EQ(parseNumber(shortest(value)), value) << shortest(value);
        }
        const double price = static_cast<double>(random() % 100'000'000) / 1000;
        ASSERT_EQ(parseNumber(shortest(price)), price);
        ASSERT_EQ(parseNumber(formatFixed(price, 3)), price);
    }
}
