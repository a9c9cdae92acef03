#pragma once

#include "access_bases.h"
#include "promise.h"

#include <QFile>

#include <optional>

namespace varo::fuzz {

/// Pages and rows beyond which a run costs more than it is likely to find.
inline constexpr int kMostPages = 1500;
inline constexpr int kMostRows = 30;

/// Whether `work` ends without an Error, which says something.
template <class Work>
bool succeeds(Work work) {
    try {
        work();
        return true;
    } catch (const data::Error& error) {
        require(!error.description().isEmpty(), "an error has a reason");
        return false;
    }
}

inline QByteArray contentOf(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// Lets a file give no more than `count` pages.
class PageBudget {
  public:
    PageBudget(access::PageFile& file, int count) : file_(file), left_(count) {
        file.setPageNotice([this] {
            if (--left_ < 0) {
                throw data::Error(QStringLiteral("enough pages were read"));
            }
        });
    }
    ~PageBudget() { file_.setPageNotice({}); }
    Q_DISABLE_COPY_MOVE(PageBudget)

    bool isSpent() const { return left_ < 0; }

  private:
    access::PageFile& file_;
    int left_;
};

/// The rows and the rules of the table that is defined on `page`, or one of its indexes.
void readTableAt(access::PageFile& file, access::PageNumber page, std::uint8_t detail);

/// Whether the input wants what it writes committed.
inline bool commits(const AccessInput& input) {
    return input.detail % 4 == 0;
}

/// Changes rows of a table. True when the file has been written.
bool checkWriting(const AccessBase& base, const AccessInput& input, const access::Header& header,
                  std::string_view source);

/// Opens the file beside its edited journal: reading past it shows what rolling back leaves.
void checkJournal(const AccessBase& base, const AccessInput& input, const access::Header& header);

}  // namespace varo::fuzz
