// The pages of an Access file changed in a transaction, and the maps of pages.

#include "access_page_files.h"
#include "platform/data/access/usage_map.h"

#include <gtest/gtest.h>
#include <map>
#include <random>
#include <set>

namespace varo::access {
namespace {

constexpr RowPlace kFreePages{1, 0};
constexpr RowPlace kTablePages{1, 1};

TEST(AccessPageChanges, UndoesAnyStepWhateverIsInMemory) {
    constexpr int kPageSize = 64;
    constexpr quint32 kPages = 20;
    using Pages = std::map<PageNumber, QByteArray>;
    Pages original;
    for (PageNumber number = 0; number < kPages; ++number) {
        original[number] = QByteArray(kPageSize, static_cast<char>(number));
    }
    for (unsigned seed = 1; seed <= 20; ++seed) {
        SCOPED_TRACE(seed);
        std::mt19937 random(seed);
        const auto below = [&](std::size_t end) { return static_cast<quint32>(random() % end); };
        PageChanges changes(5 * kPageSize);
        changes.begin(kPages, kPageSize);
        Pages pages = original;
        std::vector<Pages> savepoints;
        std::vector<std::pair<Page, QByteArray>> held;
        for (int step = 0; step < 500; ++step) {
            const quint32 kind = below(20);
            const int savepoint = static_cast<int>(below(savepoints.size() + 1)) + 1;
            const bool isKnown = savepoint <= static_cast<int>(savepoints.size());
            if (kind < 12) {
                const PageNumber number = below(pages.size());
                const int at = static_cast<int>(below(kPageSize));
                const auto unchanged = std::make_shared<const QByteArray>(pages[number]);
                changes.change(number, unchanged)[at] = pages[number][at] = static_cast<char>(step);
                if (kind < 3) {
                    held.emplace_back(changes.find(number), pages[number]);
                }
            } else if (kind < 14) {
                const auto number = static_cast<PageNumber>(pages.size());
                ASSERT_EQ(changes.append(), number);
                pages[number] = QByteArray(kPageSize, '\0');
            } else if (kind < 17) {
                savepoints.push_back(pages);
                ASSERT_EQ(changes.setSavepoint(), static_cast<int>(savepoints.size()));
            } else if (kind < 19) {
                changes.undoTo(savepoint);
                if (isKnown) {
                    savepoints.resize(static_cast<std::size_t>(savepoint));
                    pages = savepoints.back();
                }
            } else {
                changes.releaseSavepoint(savepoint);
                savepoints.resize(
                    std::min(savepoints.size(), static_cast<std::size_t>(savepoint - 1)));
            }
            ASSERT_EQ(changes.pageCount(), pages.size());
            const PageNumber looked = below(pages.size());
            const Page found = changes.find(looked);
            ASSERT_EQ(found ? *found : original.at(looked), pages[looked]);
        }
        for (const auto& [number, bytes] : pages) {
            const Page found = changes.find(number);
            EXPECT_EQ(found ? *found : original.at(number), bytes);
        }
        for (const auto& [page, bytes] : held) {
            EXPECT_EQ(*page, bytes);
        }
    }
}

TEST(AccessPages, AreTakenAndReleasedAsTheMapOfFreePagesSays) {
    PageTestFile items(12);
    std::mt19937 random(1);
    std::set<PageNumber> used;
    std::set<PageNumber> free;
    for (int round = 0; round < 12; ++round) {
        const auto file = items.open();
        file->begin();
        const int start = file->setSavepoint();
        for (int i = 0; i < 5; ++i) {
            file->add();
        }
        file->undoTo(start);
        for (int i = 0; i < 100; ++i) {
            const quint32 before = file->pageCount();
            const PageNumber number = file->add();
            ASSERT_TRUE(used.insert(number).second);
            ASSERT_EQ(number, free.empty() ? before : *free.begin());
            free.erase(number);
            ASSERT_EQ(*file->page(number), QByteArray(4096, '\0'));
            file->change(number)[0] = 'u';
        }
        const int savepoint = file->setSavepoint();
        for (int i = 0; i < 10; ++i) {
            file->release(*used.begin());
            ASSERT_EQ(file->add(), *used.begin());
            file->add();
        }
        file->undoTo(savepoint);
        for (int i = 0; i < 30; ++i) {
            const auto each = std::next(used.begin(), static_cast<long>(random() % used.size()));
            file->release(*each);
            free.insert(*each);
            used.erase(each);
        }
        file->commit();
        const auto fresh = items.open(data::Access::Read);
        const auto marked = markedPages(*fresh, kFreePages);
        ASSERT_EQ(std::set(marked.begin(), marked.end()), free);
        for (const PageNumber number : used) {
            ASSERT_EQ(fresh->page(number)->front(), 'u') << number;
        }
    }
    EXPECT_GT(items.content().size(), 700 * 4096);
}

TEST(AccessPages, AreMarkedInATableSMapOfAnyKind) {
    constexpr quint32 kMostPages = 40000;  // two pages with bits
    for (const quint32 range : {400U, 4000U, kMostPages}) {
        SCOPED_TRACE(range);
        PageTestFile items(12);
        ASSERT_TRUE(QFile::resize(items.path(), qint64{kMostPages} * 4096));
        const auto file = items.open();
        std::mt19937 random(range);
        std::set<PageNumber> marked;
        file->begin();
        const quint32 base = kMostPages - range;
        for (int step = 0; step < 600; ++step) {
            const PageNumber number = base + static_cast<PageNumber>(random() % range);
            const bool isMarked = random() % 3 != 0;
            setMarked(*file, kTablePages, number, isMarked);
            isMarked ? (void)marked.insert(number) : (void)marked.erase(number);
        }
        EXPECT_EQ(file->page(1)->at(4096 - 2 * 69), range > 500 ? 1 : 0);
        file->commit();
        const auto fresh = items.open(data::Access::Read);
        const auto found = markedPages(*fresh, kTablePages);
        EXPECT_EQ(std::set(found.begin(), found.end()), marked);
        const PageNumber middle = base + range / 2;
        const auto next = marked.lower_bound(middle);
        EXPECT_EQ(firstMarked(*fresh, kTablePages, middle),
                  next == marked.end() ? std::nullopt : std::optional(*next));
    }
}

TEST(AccessPages, AreNotTakenFromOrGivenToAMapThatIsDamaged) {
    PageTestFile items(12);
    QByteArray content = items.content();
    content[2 * 4096 - 69 + 5] = 0x02;  // the page of the map itself is free
    items.write(items.path(), content);
    const auto file = items.open();
    EXPECT_NE(refusal([&] { file->add(); }), QString());
    EXPECT_NE(refusal([&] { file->change(5); }), QString());
    file->begin();
    EXPECT_EQ(file->add(), 12U);
    for (const PageNumber number : {0U, 1U, 2U, 13U, 5000000U}) {
        EXPECT_NE(refusal([&] { file->release(number); }), QString());
    }
    EXPECT_NE(refusal([&] { file->change(13); }), QString());
    file->undo();
    content[2 * 4096 - 69] = 7;
    items.write(items.path(), content);
    file->begin();
    EXPECT_NE(refusal([&] { file->add(); }), QString());
}

}  // namespace
}  // namespace varo::access
