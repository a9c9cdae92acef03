#pragma once

#include "platform/data/access/page_file.h"

namespace varo::access {

/// Keeps a file from being written by others while it is read.
class Reading {
  public:
    /// Throws data::Error as PageFile::beginReading() does.
    explicit Reading(PageFile& file) : file_(file) { file_.beginReading(); }
    ~Reading() { file_.endReading(); }
    Q_DISABLE_COPY_MOVE(Reading)

  private:
    PageFile& file_;
};

}  // namespace varo::access
