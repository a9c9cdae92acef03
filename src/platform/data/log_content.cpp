#include "platform/data/log_content.h"

#include "platform/data/file_start.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <algorithm>
#include <map>
#include <optional>

namespace varo::data {

namespace {

constexpr int kHead = 32;
constexpr int kFrameHead = 24;

// Places of numbers in the head of the log and of a frame, and what of them is summed up.
constexpr int kPageSize = 8;
constexpr int kSalt = 16;
constexpr int kHeadSummed = 24;
constexpr int kPage = 0;
constexpr int kPagesThen = 4;
constexpr int kFrameSalt = 8;
constexpr int kFrameSummed = 8;
constexpr int kFrameSum = 16;
constexpr int kSaltSize = 8;

quint32 number(const QByteArray& bytes, qsizetype place) {
    return qFromBigEndian<quint32>(bytes.constData() + place);
}

/// The sum of all that precedes, by which SQLite tells where the log ends.
class RunningSum {
  public:
    explicit RunningSum(bool isBigEndian) : isBigEndian_(isBigEndian) {}

    /// Adds a multiple of 8 bytes.
    void add(QByteArrayView bytes) {
        for (qsizetype place = 0; place < bytes.size(); place += 8) {
            first_ += word(bytes.data() + place) + second_;
            second_ += word(bytes.data() + place + 4) + first_;
        }
    }

    bool isStoredAt(const QByteArray& bytes, qsizetype place) const {
        return number(bytes, place) == first_ && number(bytes, place + 4) == second_;
    }

  private:
    quint32 word(const char* bytes) const {
        return isBigEndian_ ? qFromBigEndian<quint32>(bytes) : qFromLittleEndian<quint32>(bytes);
    }

    bool isBigEndian_;
    quint32 first_ = 0;
    quint32 second_ = 0;
};

/// A page that the log holds.
struct Frame {
    quint32 page = 0;
    quint32 pagesThen = 0;  ///< pages of the database after the commit that this ends; 0 in another
    QByteArray content;
};

/// Reads a log as far as SQLite does.
class LogReader {
  public:
    explicit LogReader(QFile& file) : file_(file) {
        const QByteArray head = file_.read(kHead);
        if (head.size() < kHead) {
            return;
        }
        sum_ = RunningSum((number(head, 0) & 1U) != 0);
        sum_.add(QByteArrayView(head).first(kHeadSummed));
        if (sum_.isStoredAt(head, kHeadSummed)) {
            pageSize_ = static_cast<int>(number(head, kPageSize));
            salt_ = head.mid(kSalt, kSaltSize);
        }
    }

    /// The next frame; nothing at the end.
    std::optional<Frame> next() {
        const QByteArray head = file_.read(kFrameHead);
        Frame frame;
        frame.content = file_.read(pageSize_);
        if (pageSize_ == 0 || head.size() < kFrameHead || frame.content.size() < pageSize_ ||
            head.mid(kFrameSalt, kSaltSize) != salt_ || number(head, kPage) == 0) {
            return std::nullopt;
        }
        sum_.add(QByteArrayView(head).first(kFrameSummed));
        sum_.add(frame.content);
        if (!sum_.isStoredAt(head, kFrameSum)) {
            return std::nullopt;
        }
        frame.page = number(head, kPage);
        frame.pagesThen = number(head, kPagesThen);
        return frame;
    }

    int pageSize() const { return pageSize_; }

  private:
    QFile& file_;
    RunningSum sum_{false};
    QByteArray salt_;
    int pageSize_ = 0;
};

}  // namespace

bool isLogOf(const QString& path, QFile& log) {
    struct Latest {
        bool isInDatabase = false;
        qint64 commit = 0;  ///< that wrote it
    };
    LogReader frames(log);
    FileReader database(path);
    std::map<quint32, Latest> pages;
    std::map<quint32, Latest> uncommitted;
    qint64 commit = 1;
    qint64 size = QFileInfo(path).size();
    const qint64 sizeNow = size;
    while (const auto frame = frames.next()) {
        const int pageSize = frames.pageSize();
        const QByteArray content = database.read(qint64{frame->page - 1} * pageSize, pageSize);
        uncommitted[frame->page] = {content == frame->content, commit};
        if (frame->pagesThen > 0) {
            for (const auto& [page, latest] : uncommitted) {
                pages.insert_or_assign(page, latest);
            }
            uncommitted.clear();
            pages.erase(pages.upper_bound(frame->pagesThen), pages.end());  // are not written
            size = qint64{frame->pagesThen} * pageSize;
            ++commit;
        }
    }
    const auto hasAllUpTo = [&](qint64 last) {
        return std::ranges::all_of(pages, [&](const auto& page) {
            return page.second.isInDatabase || page.second.commit > last;
        });
    };
    const auto first = pages.find(1);
    return (size == sizeNow && hasAllUpTo(commit)) ||
           (first != pages.end() && hasAllUpTo(first->second.commit));
}

}  // namespace varo::data
