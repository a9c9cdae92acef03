#pragma once

#include "engine/text/text_call.h"

#include <optional>
#include <span>
#include <string>
#include <string_view>

/// The text functions of the formula language. Texts are well-formed UTF-8; positions and counts
/// are in characters, and what lies outside the text is cut to it. Results that are part of an
/// argument share its memory. Each takes time in proportion to its texts.
namespace varo::engine {

bool contains(std::string_view text, std::string_view wanted);

std::string concatenate(std::span<const std::string_view> texts);

std::string changeCase(std::string_view text, bool upper);

/// `count` characters from position `start`, both counted from the right end when `fromRight`.
std::string_view subText(std::string_view text, double start, double count, bool fromRight);

std::string_view leftText(std::string_view text, double count);
std::string_view rightText(std::string_view text, double count);

/// The piece number `index` (from 1) of `text` cut at every `separator`; "" when there is none.
std::string_view piece(std::string_view text, std::string_view separator, double index);

/// The position of the first `wanted` at or after `start`, from 1; 0 when there is none.
double findText(std::string_view text, std::string_view wanted, double start);

/// How often `wanted` occurs in `text`, without overlaps.
double countText(std::string_view text, std::string_view wanted);

/// How many characters match, comparing `left` from `leftStart` with `right` from `rightStart`.
double countMatching(std::string_view left, std::string_view right, double leftStart,
                     double rightStart, bool ignoreCase);

/// `text` without every `wanted` at its start, or at its end.
std::string_view trimText(std::string_view text, std::string_view wanted, bool atStart);

/// `text` with occurrence number `index` of `wanted` replaced, or all of them when `index` is 0.
/// Nothing when that would be longer than `limit`.
std::optional<std::string> replaceText(std::string_view text, std::string_view wanted,
                                       std::string_view replacement, double index, bool ignoreCase,
                                       ByteLimit limit);

/// `text` without any `wanted`; nothing when it is longer than `limit`.
std::optional<std::string> deleteText(std::string_view text, std::string_view wanted,
                                      ByteLimit limit);

/// `text` with `added` before position `start`; one past the end appends.
std::string insertText(std::string_view text, std::string_view added, double start);

}  // namespace varo::engine
