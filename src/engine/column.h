#pragma once

#include <cstddef>
#include <span>

namespace varo::engine {

/// The numbers of one variable in the rows of a table.
class Column {
  public:
    /// The same number in every row.
    explicit Column(double number) : number_(number) {}

    /// One number for each row; they must outlive the object.
    explicit Column(std::span<const double> numbers) : numbers_(numbers), varies_(true) {}

    /// True when there is a number for each of that many rows.
    bool covers(std::size_t rows) const { return !varies_ || numbers_.size() >= rows; }

    /// True when the rows may differ.
    bool varies() const { return varies_; }

    /// The numbers of the rows, if they may differ.
    std::span<const double> numbers() const { return numbers_; }

    /// The number of a row that is covered.
    double operator[](std::size_t row) const { return varies_ ? numbers_[row] : number_; }

  private:
    std::span<const double> numbers_;
    double number_ = 0;
    bool varies_ = false;
};

}  // namespace varo::engine
