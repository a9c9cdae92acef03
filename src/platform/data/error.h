#pragma once

#include <QString>

#include <stdexcept>

namespace varo::data {

/// The one exception of the data layer: a file that is no library, a statement that fails, a lock
/// that is not released in time, a full disk. description() is the database's own text, for the log
/// or for the message box of a routine that shows it.
class Error : public std::runtime_error {
  public:
    explicit Error(const QString& description, bool isLocked = false)
        : std::runtime_error(description.toStdString()),
          description_(description),
          isLocked_(isLocked) {}

    const QString& description() const noexcept { return description_; }

    /// Whether it was a lock of another program or connection.
    bool isLocked() const noexcept { return isLocked_; }

  private:
    QString description_;
    bool isLocked_;
};

}  // namespace varo::data
