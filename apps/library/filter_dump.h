#pragma once

#include "library/condition_lines.h"
#include "library/dump_complaints.h"
#include "library/toml_writer.h"
#include "platform/data/connection.h"

#include <map>

namespace varo {

/// Writes the properties of a library with their conditions. What is none by its numbers is left
/// out with a complaint.
class FilterDump {
  public:
    /// All must outlive this; `connection` is open on the library.
    FilterDump(data::Connection& connection, TomlWriter& out, DumpComplaints& complaints)
        : connection_(connection), out_(out), complaints_(complaints) {}

    /// To be called once. Throws data::Error or TextError.
    void write();

  private:
    void writeProperties();
    qint32 writeLine(const ConditionLine& condition, qint32 lastId);
    qint32 lastIdGivenAsRows();
    void writeConditions();
    void writeExpressions();

    data::Connection& connection_;
    TomlWriter& out_;
    DumpComplaints& complaints_;
    std::map<qint32, ConditionLine> lines_;  ///< by the filter
};

}  // namespace varo
