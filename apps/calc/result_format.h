#pragma once

#include "engine/formula.h"

#include <optional>
#include <string>

namespace varo::calc {

/// How results are written.
class ResultFormat {
  public:
    /// Numbers get that many decimals, or their shortest exact form.
    explicit ResultFormat(std::optional<int> decimals) : decimals_(decimals) {}

    std::string text(double number) const;

    /// A text stays as it is.
    std::string text(const engine::Value& value) const;

  private:
    std::optional<int> decimals_;
};

}  // namespace varo::calc
