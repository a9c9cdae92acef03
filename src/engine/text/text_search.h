#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

namespace varo::engine {

/// Looks for one sequence of characters in others, in time proportional to their lengths whatever
/// they hold.
template <class Character>
class TextSearch {
  public:
    using View = std::basic_string_view<Character>;

    /// `wanted` must not be empty and must outlive the search.
    explicit TextSearch(View wanted) : wanted_(wanted) {
        if (wanted_.size() < kLong) {
            return;
        }
        borders_.resize(wanted_.size(), 0);
        std::size_t border = 0;
        for (std::size_t i = 1; i < wanted_.size(); ++i) {
            border = advance(border, wanted_[i]);
            borders_[i] = border;
        }
    }

    /// Where the first occurrence at or after `from` begins; View::npos when there is none.
    std::size_t find(View text, std::size_t from) const {
        if (borders_.empty()) {
            return text.find(wanted_, from);
        }
        std::size_t matched = 0;
        for (std::size_t i = from; i < text.size(); ++i) {
            matched = advance(matched, text[i]);
            if (matched == wanted_.size()) {
                return i + 1 - matched;
            }
        }
        return View::npos;
    }

  private:
    // From this length on, looking at every place afresh could take too long.
    static constexpr std::size_t kLong = 16;

    /// How much of `wanted_` ends at a character, when `matched` of it ended before that character.
    std::size_t advance(std::size_t matched, Character next) const {
        while (matched > 0 && wanted_[matched] != next) {
            matched = borders_[matched - 1];
        }
        return wanted_[matched] == next ? matched + 1 : 0;
    }

    View wanted_;
    std::vector<std::size_t>
        borders_;  // of each beginning of wanted_, how much of its end is also its start
};

}  // namespace varo::engine
