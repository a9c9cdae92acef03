#pragma once

#include <QString>

namespace varo::test {

/// While it lives, a trigger works in every connection to one database, also those that are opened
/// meanwhile: a trigger of the connection, since those of a file are not run.
class Refusal {
  public:
    /// `trigger` is the statement that creates it, from behind its name on.
    Refusal(const QString& path, const QString& trigger);
    ~Refusal();
    Q_DISABLE_COPY_MOVE(Refusal)

  private:
    QString path_;
};

}  // namespace varo::test
