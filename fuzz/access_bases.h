#pragma once

#include "access_input.h"
#include "platform/data/access/virtual_table.h"

#include <QByteArray>
#include <QString>

#include <vector>

namespace varo::fuzz {

/// A table of a base file: the page of its definition, and all pages that are read with it.
struct AccessBaseTable {
    QString name;
    access::PageNumber page = 0;
    std::vector<access::PageNumber> pages;
};

/// A file that inputs edit.
struct AccessBase {
    QString path;
    access::Header header{};
    QByteArray content;
    std::vector<AccessBaseTable> tables;  ///< the first is the catalog

    /// A journal of a commit to the file, and the file as the commit leaves it.
    QByteArray journal;
    QByteArray committed;
    std::vector<access::PageNumber> committedPages;

    qsizetype pageSize() const { return header.layout().pageSize; }
    const AccessBaseTable& table(const AccessInput& input) const {
        return tables[input.table % tables.size()];
    }
    /// Where the edit begins in the file; not for one of the journal.
    qsizetype placeOf(const AccessInput& input, const AccessEdit& edit) const;
};

/// One table of a file alone, to be written.
access::SeenTables onlyTable(access::PageFile& file, const QString& name, access::PageNumber page);

/// The files below `folder`, each in one of its own: kSmallAccessBases that are created there, and
/// copies of those in the folder that the environment variable VARO_ACCESS_FILES names.
inline constexpr std::size_t kSmallAccessBases = 2;
std::vector<AccessBase> makeAccessBases(const QString& folder);

}  // namespace varo::fuzz
