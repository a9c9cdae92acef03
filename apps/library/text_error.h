#pragma once

#include <QString>

#include <stdexcept>

namespace varo {

/// A place in a text file; line and column count from 1.
struct Position {
    int line = 0;
    int column = 0;
};

/// A library text that cannot be built from, or a file that cannot be read or written.
class TextError : public std::runtime_error {
  public:
    /// Something is wrong at one place of the text file `path`.
    TextError(const QString& path, Position at, const QString& message);

    /// Something is wrong with the file `path` as a whole.
    TextError(const QString& path, const QString& message);

    /// "file:line:column: message", or "file: message".
    const QString& description() const noexcept { return description_; }

  private:
    QString description_;
};

}  // namespace varo
