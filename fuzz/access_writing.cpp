// Changes of rows, which are there as a whole or not at all.

#include "access_work.h"
#include "chance.h"
#include "platform/data/access/index_tree.h"
#include "platform/data/access/reading.h"

#include <QDateTime>
#include <QFileInfo>

#include <array>

using namespace varo::access;

namespace varo::fuzz {

namespace {

Value madeUp(const Column& column, Chance& chance, std::string_view source) {
    switch (chance.below(5)) {
        case 0:
            return {};
        case 1:
            return static_cast<qint64>(chance.below(300)) - 20;
        case 2:
            return chance.number();
        case 3: {
            constexpr std::array kLengths{0, 1, 60, 300, 5000, 13000};
            const int length = kLengths[chance.below(kLengths.size())];
            const QByteArray bytes(length, static_cast<char>('a' + chance.below(20)));
            return column.type == FieldType::Memo || column.type == FieldType::Text
                       ? Value(Text{bytes})
                       : Value(bytes);
        }
        default:
            return Text{QByteArray::fromStdString(chance.text(source))};
    }
}

/// Fields of which a table takes some.
std::vector<FieldChange> changesFor(const TableDefinition& table, Chance& chance,
                                    std::string_view source) {
    std::vector<FieldChange> changes;
    for (const Column& column : table.columns) {
        if (chance.below(3) == 0) {
            changes.emplace_back(madeUp(column, chance, source));
        } else {
            changes.emplace_back(Kept());
        }
    }
    return changes;
}

/// Changes of a table in a transaction.
class Writing {
  public:
    Writing(PageFile& file, const AccessBaseTable& of, std::string_view source)
        : file_(file),
          of_(of),
          source_(source),
          chance_(source),
          seen_(fuzz::onlyTable(file, of.name, of.page)),
          writer_(seen_.writerOf(seen_.tables.front())) {
        succeeds([&] {
            const PageBudget budget(file_, kMostPages);
            RowScan scan(file_, table());
            while (places_.size() < kMostRows && scan.next()) {
                places_.push_back(scan.place());
            }
        });
    }

    /// Inserts, updates or removes a row; what fails, perhaps because a page cannot be read,
    /// changes nothing.
    void step() {
        const std::vector<Page> before = pages();
        const quint32 pageCount = file_.pageCount();
        const bool done = succeeds([&] {
            const PageBudget budget(
                file_, chance_.below(4) == 0 ? static_cast<int>(chance_.below(60)) : kMostPages);
            change();
        });
        require(done || (file_.pageCount() == pageCount && isSame(before, pages())),
                "a failed change changes nothing");
    }

    /// Rows that were added, less those that were removed.
    int added() const { return added_; }
    const TableDefinition& table() const { return seen_.tables.front().definition; }

  private:
    void change() {
        const std::size_t what = chance_.below(4);
        if (places_.empty() || what < 2) {
            places_.push_back(writer_.insert(changesFor(table(), chance_, source_)));
            ++added_;
            return;
        }
        const std::size_t row = chance_.below(places_.size());
        if (what == 2) {
            writer_.update(places_[row], changesFor(table(), chance_, source_));
        } else {
            writer_.remove(places_[row]);
            places_.erase(places_.begin() + static_cast<std::ptrdiff_t>(row));
            --added_;
        }
    }

    std::vector<Page> pages() {
        std::vector<Page> pages;
        for (const PageNumber number : of_.pages) {
            if (number < file_.pageCount()) {
                pages.push_back(file_.page(number));
            }
        }
        return pages;
    }

    static bool isSame(const std::vector<Page>& one, const std::vector<Page>& other) {
        return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                          [](const Page& first, const Page& second) {
                              return first == second || *first == *second;
                          });
    }

    PageFile& file_;
    const AccessBaseTable& of_;
    std::string_view source_;
    Chance chance_;
    SeenTables seen_;  ///< one alone
    TableWriter& writer_;
    std::vector<RowPlace> places_;
    int added_ = 0;
};

int countRows(PageFile& file, const TableDefinition& table) {
    int rows = 0;
    for (RowScan scan(file, table); scan.next(); ++rows) {
    }
    return rows;
}

/// What was committed to a file that is in order.
void requireSound(const AccessBase& base, const AccessInput& input, int rows) {
    PageFile file(base.path, base.header, data::Access::Read);
    const Reading reading(file);
    const TableDefinition table = readTable(file, base.table(input).page);
    require(countRows(file, table) == rows, "a table has the rows that were written");
    if (!table.indexes.empty()) {
        const Index& index = table.indexes[input.detail / 4 % table.indexes.size()];
        require(checkIndex(file, table, index).isEmpty() &&
                    checkIndexRows(file, table, index).isEmpty(),
                "the indexes of a sound table stay sound");
    }
}

}  // namespace

bool checkWriting(const AccessBase& base, const AccessInput& input, const Header& header,
                  std::string_view source) {
    constexpr int kSteps = 2;
    const AccessBaseTable& of = base.table(input);
    const QDateTime before = QFileInfo(base.path).lastModified();
    std::optional<int> rows;
    PageFile file(base.path, header, data::Access::Write);
    const bool isDone = succeeds([&] {
        file.begin();
        Writing writing(file, of, source);
        const bool isSound = input.edits.empty();
        rows = isSound ? std::optional(countRows(file, writing.table())) : std::nullopt;
        for (int i = 0; i < kSteps; ++i) {
            writing.step();
        }
        rows = isSound ? std::optional(*rows + writing.added()) : std::nullopt;
        if (commits(input)) {
            file.commit();
        }
    });
    file.undo();
    if (!commits(input) || !isDone) {
        require(QFileInfo(base.path).lastModified() == before, "what was undone was never there");
    } else if (rows) {
        requireSound(base, input, *rows);
    } else {
        PageFile again(base.path, header, data::Access::Read);
        succeeds([&] { readTableAt(again, of.page, input.detail); });
    }
    return commits(input) && isDone;
}

}  // namespace varo::fuzz
