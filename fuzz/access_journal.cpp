// What becomes of a file beside a journal.

#include "access_work.h"
#include "platform/data/access/checksum.h"
#include "platform/data/access/reading.h"

#include <QScopeGuard>

#include <fcntl.h>
#include <unistd.h>

using namespace varo::access;

namespace varo::fuzz {

namespace {

/// The journal of the base, edited; with a new checksum unless the input says otherwise.
QByteArray editedJournal(const AccessBase& base, const AccessInput& input) {
    constexpr qsizetype kPart = 4096;
    constexpr qsizetype kSum = 8;
    QByteArray journal = base.journal;
    for (const AccessEdit& edit : input.edits) {
        if (edit.place == AccessPlace::Journal) {
            const qsizetype at = (edit.page * kPart + edit.offset) % journal.size();
            const auto bytes = QByteArray::fromStdString(edit.bytes).left(journal.size() - at);
            journal.replace(at, bytes.size(), bytes);
        }
    }
    constexpr std::uint8_t kKeepsSum = 0x80;
    if ((input.detail & kKeepsSum) == 0) {
        Checksum sum;
        sum.add(journal.constData(), journal.size() - kSum);
        qToLittleEndian(sum.value(), journal.data() + journal.size() - kSum);
    }
    return journal;
}

QByteArray wholePages(const QByteArray& content, qsizetype pageSize) {
    return content.left(content.size() - content.size() % pageSize);
}

/// All pages of the file at `path`; nothing when they cannot be read.
std::optional<QByteArray> readPages(const QString& path, const Header& header,
                                    data::Access access) {
    QByteArray all;
    const bool isRead = succeeds([&] {
        PageFile file(path, header, access);
        const Reading reading(file);
        for (PageNumber number = 0; number < file.pageCount(); ++number) {
            all += *file.page(number);
        }
    });
    return isRead ? std::optional(all) : std::nullopt;
}

}  // namespace

void checkJournal(const AccessBase& base, const AccessInput& input, const Header& header) {
    const qsizetype pageSize = header.layout().pageSize;
    const QString path = Journal::pathOf(base.path);
    const QByteArray journal = editedJournal(base, input);
    QFile file(path);
    require(file.open(QIODevice::WriteOnly) && file.write(journal) == journal.size(),
            "the sandbox can be written to");
    file.close();
    const QByteArray before = contentOf(base.path);
    std::optional<Journal::Finding> finding;
    succeeds([&] {
        const int descriptor = ::open(base.path.toUtf8().constData(), O_RDONLY | O_CLOEXEC);
        Journal found(path);
        const auto close = qScopeGuard([&] { ::close(descriptor); });
        finding = found.find(descriptor, static_cast<int>(pageSize));
    });
    const auto shown = readPages(base.path, header, data::Access::Read);
    require(contentOf(base.path) == before && contentOf(path) == journal,
            "reading changes nothing");
    const auto written = readPages(base.path, header, data::Access::Write);
    const QByteArray after = contentOf(base.path);
    const bool isGone = !Journal::exists(path);
    require(isGone || contentOf(path) == journal, "a journal that stays is as it was");
    require(finding == Journal::Finding::Applicable || after == before,
            "only a journal that fits is applied");
    if (header.isJet3()) {
        require(!isGone && after == before, "an old file is only read");
        return;
    }
    require(isGone == (finding && *finding != Journal::Finding::Unknown),
            "a journal that fits, or of a commit that did not begin, is removed");
    require(shown == written && (!written || *written == wholePages(after, pageSize)),
            "all see what is there after a roll back");
}

}  // namespace varo::fuzz
