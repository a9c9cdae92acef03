#include "engine/numbers.h"

#include <cstring>
#include <gtest/gtest.h>
#include <limits>
#include <random>

using namespace varo::engine;

TEST(Numbers, FormatFixedRoundsHalvesAwayFromZeroAsTheNumberIsWritten) {
    struct Case {
        double value;
        int decimals;
        std::string_view expected;
    };
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::initializer_list<Case> cases = {
        {0, 0, "0"},
        {0, 2, "0.00"},
        {1.0 / 3, 3, "0.333"},
        {2.0 / 3, 3, "0.667"},
        {2.675, 2, "2.68"},
        {-2.675, 2, "-2.68"},
        {0.5, 0, "1"},
        {1.5, 0, "2"},
        {2.5, 0, "3"},
        {-0.4, 0, "0"},
        {-0.004, 2, "0.00"},
        {-0.005, 2, "-0.01"},
        {0.05, 1, "0.1"},
        {0.04, 1, "0.0"},
        {9.995, 2, "10.00"},
        {99.5, 0, "100"},
        {1234567.891, 1, "1234567.9"},
        {1e15, 2, "1000000000000000.00"},
        {123456789012345678.0, 0, "123456789012346000"},
        {1e22, 0, "10000000000000000000000"},
        {1.0 / 3, 20, "0.33333333333333300000"},
        {1e-10, 12, "0.000000000100"},
        {1e-300, 2, "0.00"},
        {3.5, -2, "4"},
        {infinity, 2, "inf"},
        {-infinity, 2, "-inf"},
        {std::numeric_limits<double>::quiet_NaN(), 2, "nan"},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(formatFixed(c.value, c.decimals), c.expected) << c.value << " " << c.decimals;
    }
    EXPECT_EQ(formatFixed(1, std::numeric_limits<int>::max()).size(), 1002U);
    EXPECT_EQ(formatFixed(std::numeric_limits<double>::max(), 0).size(), 309U);
}

TEST(Numbers, ParseNumberReadsANumberAndNothingElse) {
    struct Case {
        std::string_view text;
        double expected;
    };
    const std::initializer_list<Case> cases = {
        {"0", 0},
        {"12", 12},
        {" 12 ", 12},
        {"\t-1.5\n", -1.5},
        {"+.5", 0.5},
        {"5.", 5},
        {"1e3", 1000},
        {"1E-3", 1e-3},
        {"2.5e+2", 250},
        {"00012", 12},
        {"1e-999", 0},
        {"-0", 0},
        {"0.1", 0.1},
        {"1e22", 1e22},
        {"1e23", 1e23},
        {"0e999999", 0},
        {"\u30001", 1},
        {"0.30000000000000004", 0.1 + 0.2},
        {"179769313486231570000e288", std::numeric_limits<double>::max()},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(parseNumber(c.text), c.expected) << c.text;
    }
    for (const std::string_view text :
         {"",     " ",     ".",      "-",   "+",  "e5",    "1e",  "1e+", "1.2.3",
          "1,5",  "--1",   "- 1",    "1 2", "1x", "x1",    "inf", "nan", "infinity",
          "0x10", "1e999", "-1e999", "１",  "1f", "1_000", "(1)"}) {
        EXPECT_EQ(parseNumber(text), std::nullopt) << text;
    }
    EXPECT_EQ(parseNumber(std::string_view("1\0", 2)), std::nullopt);
}

TEST(Numbers, LeadingNumberTakesTheLongestBeginning) {
    EXPECT_EQ(leadingNumber("12.5mm"), 12.5);
    EXPECT_EQ(leadingNumber("  -3 4"), -3);
    EXPECT_EQ(leadingNumber("1e5x"), 1e5);
    EXPECT_EQ(leadingNumber("1ex"), 1);
    EXPECT_EQ(leadingNumber("1.2.3"), 1.2);
    EXPECT_EQ(leadingNumber(""), 0);
    EXPECT_EQ(leadingNumber("abc"), 0);
    EXPECT_EQ(leadingNumber("-"), 0);
    EXPECT_EQ(leadingNumber("1e999"), 0);
}

TEST(Numbers, ShortestIsAsShortAsReadingBackAllows) {
    EXPECT_EQ(shortest(0.1), "0.1");
    EXPECT_EQ(shortest(-0.0), "0");
    EXPECT_EQ(shortest(100), "100");
    EXPECT_EQ(shortest(1e300), "1e+300");
    EXPECT_EQ(shortest(0.1 + 0.2), "0.30000000000000004");
}

TEST(Numbers, EveryNumberReadsBackFromItsShortestText) {
    std::mt19937_64 random(20240229);
    for (int i = 0; i < 20'000; ++i) {
        const std::uint64_t bits = random();
        double value = 0;
        static_assert(sizeof value == sizeof bits);
        std::memcpy(&value, &bits, sizeof value);
        if (value - value == 0) {
            ASSERT_EQ(parseNumber(shortest(value)), value) << shortest(value);
        }
        const double price = static_cast<double>(random() % 100'000'000) / 1000;
        ASSERT_EQ(parseNumber(shortest(price)), price);
        ASSERT_EQ(parseNumber(formatFixed(price, 3)), price);
    }
}

TEST(Numbers, RoundDecimalsAlsoRoundsBeforeThePoint) {
    EXPECT_EQ(roundDecimals(1250, -2), 1300);
    EXPECT_EQ(roundDecimals(-1250, -2), -1300);
    EXPECT_EQ(roundDecimals(0.15, 1), 0.2);
    EXPECT_EQ(roundDecimals(4, -1), 0);
    EXPECT_EQ(formatRounded(1250, -2), "1300");
    EXPECT_EQ(formatRounded(1.25, 1), "1.3");
    EXPECT_EQ(roundDecimals(std::numeric_limits<double>::max(), 0),
              std::numeric_limits<double>::max());
}
