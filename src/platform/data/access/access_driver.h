#pragma once

#include "platform/data/driver.h"

namespace varo::access {

/// Reads the files of Microsoft Access: Jet 3 and 4, ACE. Their tables are seen through a database
/// of SQLite in memory; they cannot be written.
class AccessDriver final : public data::Driver {
  public:
    std::unique_ptr<data::DatabaseFile> open(const QString& path,
                                             data::Access access) const override;
};

}  // namespace varo::access
