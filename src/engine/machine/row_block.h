#pragma once

#include "engine/column.h"
#include "engine/machine/instruction.h"

#include <cstddef>
#include <span>
#include <vector>

namespace varo::engine {

/// Evaluates a program for many rows of variables at a time, each instruction for all of them
/// before the next. Every row gets bit for bit what it would get alone.
class RowBlock {
  public:
    /// How many rows are evaluated at a time.
    static constexpr std::size_t kRows = 256;

    /// `code` works on numbers only; `columns` holds a column for each variable, of `rows` rows.
    /// Both must outlive the block.
    RowBlock(const Code& code, std::span<const Column> columns, std::size_t rows);

    enum class Outcome {
        Complete,
        SomeFailed,  ///< their results are not finite; or a number in their columns is not
        Diverged,    ///< the rows take different branches and have to be evaluated one by one
    };

    /// Evaluates so many rows from `first` on, kRows at most.
    Outcome run(std::size_t first, std::size_t rows);

    /// After run(): the results of its rows, unless they diverged.
    std::span<const double> results() const { return {registers_.accumulator, registers_.rows}; }

    /// For the steps: where the values of all rows are.
    struct Registers {
        std::size_t rows = 0;
        const double* const* variables = nullptr;
        double* accumulator = nullptr;
        double* spare = nullptr;  ///< as long as the accumulator
        double* poison = nullptr;
        double** temporaries = nullptr;
    };

  private:
    const Code& code_;
    std::span<const Column> columns_;
    std::vector<double> memory_;
    std::vector<const double*> variables_;  // the values of each variable in the current block
    std::vector<double*> temporaries_;
    Registers registers_;
};

}  // namespace varo::engine
