#include "engine/vocabulary.h"

#include <algorithm>
#include <array>

namespace varo::engine {
namespace {

constexpr std::array<OperatorInfo, 19> kOperators{{
    {"!", 9},    {"^", 8},     {"+", 7},   {"-", 7},   {"*", 6},  {"/", 6}, {"+", 5},
    {"-", 5},    {"=", 4},     {"<>", 4},  {"<", 4},   {"<=", 4}, {">", 4}, {">=", 4},
    {"Like", 4}, {"Equal", 4}, {"Not", 3}, {"And", 2}, {"Or", 1},
}};

constexpr std::array<FunctionInfo, 34> kFunctions{{
    {"sin", "n", 'n'},
    {"cos", "n", 'n'},
    {"tan", "n", 'n'},
    {"arcsin", "n", 'n'},
    {"arccos", "n", 'n'},
    {"arctan", "n", 'n'},
    {"arcctan", "n", 'n'},
    {"ctan", "n", 'n'},
    {"sqrt", "n", 'n'},
    {"ln", "n", 'n'},
    {"log", "n", 'n'},
    {"int", "n", 'n'},
    {"deci", "n", 'n'},
    {"preci", "nn", 'n'},
    {"mod", "nn", 'n'},
    {"R2S", "nn", 't'},
    {"S2R", "t", 'n'},
    {"StrCase", "tn", 't'},
    {"StrCat", "tt", 't', true},
    {"StrSub", "tnnn", 't'},
    {"Left", "tn", 't'},
    {"Right", "tn", 't'},
    {"StrSubN", "ttn", 't'},
    {"StrLen", "t", 'n'},
    {"StrFind", "ttn", 'n'},
    {"StrFindN", "tt", 'n'},
    {"StrMismatch", "ttnnn", 'n'},
    {"StrTrim", "ttn", 't'},
    {"StrTrimS", "t", 't'},
    {"StrReplace", "tttnn", 't'},
    {"StrDelete", "tt", 't'},
    {"StrInsert", "ttn", 't'},
    {"If", "naa", 'a'},
    {"", "", 'a'},
}};

constexpr std::size_t kFunctionCount = static_cast<std::size_t>(Function::Unknown);

constexpr std::size_t longestName() {
    std::size_t longest = 0;
    for (const FunctionInfo& info : kFunctions) {
        longest = std::max(longest, info.name.size());
    }
    return longest;
}

/// A name that can be compared with a case-folded one.
struct FoldedName {
    std::array<char, longestName()> characters{};
    std::size_t size = 0;
    Function function = Function::Unknown;

    constexpr std::string_view view() const { return {characters.data(), size}; }
};

constexpr auto sortedNames() {
    std::array<FoldedName, kFunctionCount> names{};
    for (std::size_t i = 0; i < kFunctionCount; ++i) {
        const std::string_view name = kFunctions[i].name;
        names[i].size = name.size();
        names[i].function = static_cast<Function>(i);
        for (std::size_t k = 0; k < name.size(); ++k) {
            const bool upper = name[k] >= 'A' && name[k] <= 'Z';
            names[i].characters[k] = static_cast<char>(upper ? name[k] + 32 : name[k]);
        }
    }
    std::sort(names.begin(), names.end(),
              [](const FoldedName& a, const FoldedName& b) { return a.view() < b.view(); });
    return names;
}

constexpr auto kSortedNames = sortedNames();

}  // namespace

const OperatorInfo& infoOf(Operator op) {
    return kOperators[static_cast<std::size_t>(op)];
}

const FunctionInfo& infoOf(Function function) {
    return kFunctions[static_cast<std::size_t>(function)];
}

Function functionNamed(std::string_view foldedName) {
    const auto found = std::lower_bound(
        kSortedNames.begin(), kSortedNames.end(), foldedName,
        [](const FoldedName& name, std::string_view wanted) { return name.view() < wanted; });
    return found != kSortedNames.end() && found->view() == foldedName ? found->function
                                                                      : Function::Unknown;
}

std::optional<Operator> operatorNamed(std::string_view foldedName) {
    if (foldedName.size() < 2 || foldedName.size() > 5) {
        return std::nullopt;
    }
    for (const Operator op :
         {Operator::Not, Operator::And, Operator::Or, Operator::Like, Operator::Equal}) {
        const std::string_view word = infoOf(op).spelling;
        const bool same = word.substr(1) == foldedName.substr(1) &&
                          word.front() - 'A' + 'a' == foldedName.front();
        if (same) {
            return op;
        }
    }
    return std::nullopt;
}

std::optional<double> constantNamed(std::string_view foldedName) {
    if (foldedName == "pi" || foldedName == "π") {
        return 3.141592653589793;
    }
    if (foldedName == "exp") {
        return 2.718281828459045;
    }
    return std::nullopt;
}

}  // namespace varo::engine
