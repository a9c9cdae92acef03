#pragma once

#include "platform/data/driver.h"

namespace varo::access {

/// The files of Microsoft Access: Jet 4 and ACE, and Jet 3, which can only be read.
class AccessDriver final : public data::Driver {
  public:
    std::unique_ptr<data::DatabaseFile> open(const QString& path,
                                             data::Access access) const override;
};

}  // namespace varo::access
