#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Choices that look random and are the same for the same bytes.
class Chance {
  public:
    explicit Chance(std::string_view bytes) {
        for (const char byte : bytes) {
            state_ = (state_ ^ static_cast<unsigned char>(byte)) * 0x100000001b3;
        }
    }

    /// One of 0 to `bound` - 1.
    std::size_t below(std::size_t bound) {
        state_ += 0x9e3779b97f4a7c15;
        std::uint64_t mixed = (state_ ^ (state_ >> 30)) * 0xbf58476d1ce4e5b9;
        mixed = (mixed ^ (mixed >> 27)) * 0x94d049bb133111eb;
        return (mixed ^ (mixed >> 31)) % bound;
    }

    /// A finite number: one at a bound of a function or operator, or any.
    double number() {
        constexpr std::array kBounds{
            0.0,  1.0,   -1.0,  2.0,    3.0,     0.5,    -2.5,
            10.0, 170.0, 171.0, 1e-300, 1.7e308, 5e-324, 9007199254740992.0};
        switch (below(3)) {
            case 0:
                return kBounds[below(kBounds.size())];
            case 1:
                return static_cast<double>(below(2'000'001)) / 1000 - 1000;
            default:
                return static_cast<double>(below(20));
        }
    }

    /// A text of use to the text functions: often a part of `source`.
    std::string text(std::string_view source) {
        constexpr std::array<std::string_view, 8> kTexts{"",    "a",    "A,b,,c", "  -1.5e3 ",
                                                         "1 2", "弯矩", "σς\xff", "aaaaaaab"};
        if (below(2) == 0 || source.empty()) {
            return std::string(kTexts[below(kTexts.size())]);
        }
        return std::string(source.substr(below(source.size()), below(20)));
    }

  private:
    std::uint64_t state_ = 0xcbf29ce484222325;
};
