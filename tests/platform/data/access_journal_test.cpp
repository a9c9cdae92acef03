// What a crash, a full disk or another program leaves of a commit to an Access file.

#include "access_page_files.h"
#include "platform/data/access/file_lock.h"
#include "support/page_layers.h"

#include <QDir>
#include <QFileInfo>

#include <gtest/gtest.h>
#include <sys/file.h>
#include <unistd.h>

namespace varo::access {
namespace {

using namespace Qt::StringLiterals;
using data::Access;
using test::Disk;

/// Changes pages, releases one, takes one of the file and appends some.
void edit(PageFile& file) {
    file.begin();
    file.release(7);
    file.change(4)[100] = 'a';
    for (int i = 0; i < 3; ++i) {
        std::fill_n(file.change(file.add()), file.layout().pageSize, 'b');
    }
    std::fill_n(file.change(9), file.layout().pageSize, 'c');
    file.commit();
}

/// What a reader sees of the file.
QByteArray pagesSeen(PageFile& file) {
    QByteArray all;
    file.beginReading();
    for (PageNumber number = 0; number < file.pageCount(); ++number) {
        all += *file.page(number);
    }
    file.endReading();
    return all;
}

class AccessJournal : public testing::Test {
  protected:
    QString journal() const { return items.path() + u"-varo-journal"_s; }

    /// Puts a disk that a crash left into the folder.
    void restore(const Disk& disk) {
        QDir folder(items.folder.path());
        for (const QString& name : folder.entryList(QDir::Files)) {
            folder.remove(name);
        }
        for (auto i = disk.begin(); i != disk.end(); ++i) {
            items.write(i.key(), i.value());
        }
    }

    /// The changes to files that `work` makes.
    template <class Work>
    std::vector<test::FileChange> recorded(Work work) {
        test::PageRecorder recorder;
        work();
        return recorder.changes;
    }

    /// A file whose commit was interrupted after its pages were written.
    Disk interrupted() {
        const QByteArray before = items.content();
        auto changes = recorded([&] { edit(*items.open()); });
        while (changes.back().kind != test::FileChange::Kind::Sync) {
            changes.pop_back();
        }
        const QByteArray after = items.content();
        Disk last;
        test::forEachCrash({{items.path(), before}}, changes, [&](const Disk& disk) {
            if (disk.contains(journal()) && disk[items.path()] == after) {
                last = disk;
            }
        });
        return last;
    }

    PageTestFile items{12};
};

TEST_F(AccessJournal, TakesAFileBackOrLeavesItCommittedAfterEachCrash) {
    const QByteArray before = items.content();
    const auto changes = recorded([&] { edit(*items.open()); });
    const QByteArray after = items.content();
    ASSERT_NE(before, after);
    int befores = 0;
    int afters = 0;
    const test::PageLayer layer;
    const int count = test::forEachCrash({{items.path(), before}}, changes, [&](const Disk& disk) {
        restore(disk);
        const auto reader = items.open(Access::Read);
        const QByteArray seen = pagesSeen(*reader);
        {  // as while another program waits to take the file back
            QFile other(items.path());
            ASSERT_TRUE(other.open(QIODevice::ReadWrite));
            lock(other.handle(), LockByte::Writer, LockKind::Alone, 0);
            ASSERT_EQ(pagesSeen(*items.open()), seen);
        }
        for (auto i = disk.begin(); i != disk.end(); ++i) {
            ASSERT_EQ(items.content(i.key()), i.value());
        }
        const auto writer = items.open();
        ASSERT_EQ(pagesSeen(*writer), seen);
        ASSERT_EQ(items.content(), seen);
        ASSERT_TRUE(seen == before || seen == after);
        ASSERT_FALSE(QFileInfo::exists(journal()));
        ++(seen == before ? befores : afters);
    });
    EXPECT_EQ(befores + afters, count);
    EXPECT_GT(befores, 100);
    EXPECT_GE(afters, 1);
}

TEST_F(AccessJournal, TakesAFileBackAfterEachCrashWhileItIsTakenBack) {
    const QByteArray before = items.content();
    const Disk left = interrupted();
    ASSERT_NE(left[items.path()], before);
    restore(left);
    const auto reader = items.open(Access::Read);
    EXPECT_EQ(pagesSeen(*reader), before);
    ASSERT_TRUE(QFile::remove(journal()));
    EXPECT_EQ(pagesSeen(*reader), left[items.path()]);
    restore(left);
    const auto changes = recorded([&] { pagesSeen(*items.open()); });
    ASSERT_EQ(items.content(), before);
    const test::PageLayer layer;
    test::forEachCrash(left, changes, [&](const Disk& disk) {
        restore(disk);
        ASSERT_EQ(pagesSeen(*items.open()), before);
        ASSERT_EQ(items.content(), before);
    });
}

TEST_F(AccessJournal, UndoesACommitOfWhichAnyStepFails) {
    const QByteArray before = items.content();
    for (const bool staysFull : {false, true}) {
        for (int failing = 1;; ++failing) {
            SCOPED_TRACE(failing);
            restore({{items.path(), before}});
            const auto file = items.open();
            bool isCommitted = true;
            {
                const test::FailingLayer layer(failing, staysFull);
                try {
                    edit(*file);
                } catch (const data::Error&) {
                    isCommitted = false;
                }
                if (!layer.hasFailed()) {
                    ASSERT_GT(failing, 10);
                    break;
                }
            }
            if (!staysFull) {
                EXPECT_EQ(items.content() == before, !isCommitted);
            }
            const test::PageLayer layer;
            EXPECT_EQ(pagesSeen(*file) == before, !isCommitted);
            EXPECT_EQ(items.content() == before, !isCommitted);
            EXPECT_FALSE(QFileInfo::exists(journal()));
            if (!isCommitted) {
                EXPECT_NO_THROW(edit(*file));
            }
        }
    }
}

TEST_F(AccessJournal, TouchesNothingWhenTheFileHasBeenChangedSince) {
    const Disk left = interrupted();
    struct Case {
        const char* what;
        void (*change)(QByteArray& file);
    };
    constexpr qsizetype kPage = 4096;
    const Case cases[] = {
        {"a page of the commit", [](QByteArray& file) { file[9 * kPage + 700] = 'x'; }},
        {"the header", [](QByteArray& file) { file[500] = 'x'; }},
        {"an appended page", [](QByteArray& file) { file[12 * kPage + 3000] = 'x'; }},
        {"a further page", [](QByteArray& file) { file.append(kPage, 'x'); }},
        {"a file cut short", [](QByteArray& file) { file.truncate(11 * kPage); }},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        Disk changed = left;
        each.change(changed[items.path()]);
        restore(changed);
        EXPECT_EQ(pagesSeen(*items.open(Access::Read)), changed[items.path()]);
        const auto file = items.open();
        EXPECT_EQ(pagesSeen(*file), changed[items.path()]);
        EXPECT_TRUE(refusal([&] { file->begin(); }).contains(journal()));
        EXPECT_EQ(items.content(), changed[items.path()]);
        EXPECT_EQ(items.content(journal()), left[journal()]);
    }
}

TEST_F(AccessJournal, AppliesNothingThatIsNoJournal) {
    const Disk left = interrupted();
    const QString elsewhere = items.folder.filePath(u"elsewhere"_s);
    const QByteArray encoded = journal().toLocal8Bit();
    struct Case {
        const char* what;
        std::function<void()> place;
    };
    const Case cases[] = {
        {"a link",
         [&] {
             ASSERT_EQ(::symlink(elsewhere.toLocal8Bit().constData(), encoded.constData()), 0);
         }},
        {"a second name",
         [&] { ASSERT_EQ(::link(elsewhere.toLocal8Bit().constData(), encoded.constData()), 0); }},
        {"a folder", [&] { ASSERT_TRUE(QDir().mkdir(journal())); }},
        {"another file", [&] { items.write(journal(), "something of the user's own"); }},
    };
    for (const Case& each : cases) {
        SCOPED_TRACE(each.what);
        restore({{items.path(), left[items.path()]}, {elsewhere, left[journal()]}});
        each.place();
        for (const Access access : {Access::Read, Access::Write}) {
            const auto file = items.open(access);
            EXPECT_TRUE(refusal([&] { pagesSeen(*file); }).contains(journal()));
        }
        EXPECT_EQ(items.content(), left[items.path()]);
        EXPECT_EQ(items.content(elsewhere), left[journal()]);
        EXPECT_TRUE(QDir().exists(journal()));
        QFileInfo(journal()).isDir() ? QDir().rmdir(journal()) : QFile::remove(journal());
    }
}

TEST_F(AccessJournal, RefusesToWriteWhereItCannotBeSafe) {
    const auto file = items.open();
    const QString lockFile = items.folder.filePath(u"FILE.LACCDB"_s);
    items.write(lockFile, "x");
    EXPECT_TRUE(refusal([&] { file->begin(); }).contains(lockFile));
    QFile::remove(lockFile);
    const QByteArray second = items.folder.filePath(u"second"_s).toLocal8Bit();
    ASSERT_EQ(::link(items.path().toLocal8Bit().constData(), second.constData()), 0);
    EXPECT_TRUE(refusal([&] { file->begin(); }).contains(u"hard links"_s));
    ::unlink(second.constData());
    EXPECT_FALSE(refusal([&] { items.open(Access::Read)->begin(); }).isEmpty());
    EXPECT_EQ(refusal([&] { edit(*file); }), QString());

    // Another program changes the file before the commit, or puts another one in its place.
    file->begin();
    file->change(3)[0] = 'y';
    QByteArray content = items.content();
    content[5 * 4096] = 'z';
    items.write(items.path(), content);
    EXPECT_FALSE(refusal([&] { file->commit(); }).isEmpty());
    EXPECT_EQ(items.content(), content);
    EXPECT_EQ(pagesSeen(*file), content);
    const auto reader = items.open(Access::Read);
    reader->beginReading();
    reader->page(6);
    content[5 * 4096] = 'w';
    items.write(items.path(), content + QByteArray(4096, 'w'));
    EXPECT_NE(refusal([&] { reader->page(5); }), QString());
    reader->endReading();
    EXPECT_EQ(pagesSeen(*reader), items.content());
    items.write(items.path(), content + "part of a page");
    EXPECT_TRUE(refusal([&] { file->begin(); }).contains(u"not whole"_s));
    QFile::remove(items.path());
    items.write(items.path(), content);
    EXPECT_THROW(
        try { file->begin(); } catch (const data::Error& error) {
            EXPECT_TRUE(error.isReplaced());
            throw;
        },
        data::Error);
}

TEST_F(AccessJournal, LetsOneWriteAndOthersReadUntilPagesAreWritten) {
    test::PageLayer layer;
    const auto writer = items.open();
    const auto other = items.open();
    const QByteArray before = pagesSeen(*other);
    const auto isLocked = [&](auto work) {
        layer.sleeps = 0;
        try {
            work();
        } catch (const data::Error& error) {
            return error.isLocked() && layer.sleeps == 200;
        }
        return false;
    };
    writer->begin();
    writer->change(3)[5] = 'q';
    EXPECT_TRUE(isLocked([&] { other->begin(); }));
    EXPECT_EQ(pagesSeen(*other), before);
    other->beginReading();
    EXPECT_TRUE(isLocked([&] { writer->commit(); }));
    other->endReading();
    EXPECT_FALSE(writer->isWriting());
    EXPECT_EQ(items.content(), before);
    for (const char letter : {'r', 's'}) {
        writer->begin();
        writer->change(3)[5] = letter;
        writer->commit();
        other->beginReading();
        EXPECT_EQ(other->page(3)->at(5), letter);
        other->endReading();
    }
    // A journal beside the file while it is being written is of no concern to readers.
    writer->begin();
    items.write(journal(), "Varo journal 1");
    other->beginReading();
    EXPECT_EQ(other->page(3)->at(5), 's');
    other->endReading();
    EXPECT_TRUE(QFile::remove(journal()));
}

}  // namespace
}  // namespace varo::access
