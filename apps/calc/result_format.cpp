#include "calc/result_format.h"

#include "engine/numbers.h"

namespace varo::calc {

std::string ResultFormat::text(double number) const {
    return decimals_ ? engine::formatFixed(number, *decimals_) : engine::shortest(number);
}

std::string ResultFormat::text(const engine::Value& value) const {
    const auto* number = std::get_if<double>(&value);
    return number != nullptr ? text(*number) : std::get<std::string>(value);
}

}  // namespace varo::calc
