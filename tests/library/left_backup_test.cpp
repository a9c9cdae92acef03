// What a program that was ended while its property-conditions dialog was open leaves behind.

#include "library/session_trial.h"

#include <functional>

namespace varo::test {
namespace {

/// A program that saves so many filters is killed once it has said that so many are saved.
void killSession(Trial& on, int filters, int said) {
    on.library.connection().close();
    LibraryProcess killed(
        {u"session"_s, on.library.path(), on.ownFolder(), QString::number(filters)});
    for (int line = 1; line <= said; ++line) {
        EXPECT_EQ(killed.readLine(), QString::number(line));
    }
    killed.kill();
    killed.wait();
}

TEST(LeftBackup, IsTakenBackOnlyIntoTheLibraryAsItWasLeft) {
    enum class Expected { Nothing, TakenBack, Deleted, KeptAside, Stays };
    const auto nothing = [](Trial&, RecordingQuestions&) {};
    const auto change = [](Trial& on) {
        on.library.connection().open(on.library.path());
        on.library.addFolder(0, u"新"_s);
        on.library.connection().close();
    };
    const auto note = [](const Trial& on) { return on.own.filePath(u"BackupDB.note"_s); };
    const struct {
        const char* what;
        std::function<void(Trial&, RecordingQuestions&)> meanwhile;
        bool answer;
        bool isAsked;
        Expected expected;
    } cases[] = {
        {"taken back", nothing, true, true, Expected::TakenBack},
        {"declined", nothing, false, true, Expected::KeptAside},
        {"no backup", [](Trial& on, auto&) { QFile::remove(on.own.filePath(u"BackupDB.def"_s)); },
         true, false, Expected::Nothing},
        {"no note", [=](Trial& on, auto&) { QFile::remove(note(on)); }, true, false,
         Expected::KeptAside},
        {"broken note", [=](Trial& on, auto&) { QFile::resize(note(on), 9); }, true, false,
         Expected::KeptAside},
        {"changed since", [=](Trial& on, auto&) { change(on); }, true, false, Expected::KeptAside},
        {"library gone", [](Trial& on, auto&) { QFile::remove(on.library.path()); }, true, false,
         Expected::KeptAside},
        {"changed while asked",
         [=](Trial& on, RecordingQuestions& questions) {
             questions.meanwhile = [&] {
                 change(on);
                 questions.meanwhile = [] {};
             };
         },
         true, true, Expected::KeptAside},
        {"locked for writing",
         [](Trial& on, RecordingQuestions& questions) {
             questions.meanwhile = [&] {
                 on.library.lock(LibraryLock::Kind::Writing);
                 questions.meanwhile = [] {};
             };
         },
         true, true, Expected::Stays},
        {"the same",
         [](Trial& on, auto&) {
             QFile::remove(on.own.filePath(u"BackupDB.def"_s));
             QFile::copy(on.library.path(), on.own.filePath(u"BackupDB.def"_s));
         },
         true, false, Expected::Deleted},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.what);
        Trial on;
        killSession(on, 1, 1);
        RecordingQuestions questions;
        questions.answers = {each.answer};
        each.meanwhile(on, questions);
        const bool settled = settleLeftBackup(on.ownFolder(), questions);
        EXPECT_EQ(settled, each.expected != Expected::Stays);
        on.library.unlock();
        EXPECT_EQ(questions.asked.size(), each.isAsked ? 1 : 0);
        EXPECT_EQ(on.isAsBefore(), each.expected == Expected::TakenBack);
        const bool isAside = on.keptAside() == on.before;
        EXPECT_EQ(isAside, each.expected == Expected::KeptAside);
        EXPECT_EQ(on.backup() == on.before, each.expected == Expected::Stays);
    }
}

TEST(LeftBackup, OfAProcessKilledAnywhereKeepsAGoodCopy) {
    for (int saved = 0; saved < 8; ++saved) {
        SCOPED_TRACE(saved);
        Trial on;
        killSession(on, 1000000, saved);
        RecordingQuestions questions;
        questions.answers = {true};
        EXPECT_TRUE(settleLeftBackup(on.ownFolder(), questions));
        EXPECT_TRUE(on.isAsBefore() || on.keptAside() == on.before);
        on.expectSound();
        EXPECT_EQ(on.open(), QString());
    }
}

/// A journal beside the library takes back what was restored of it, and it is restored again.
TEST(LeftBackup, IsTakenBackAfterEachWriteOfARestoreThatWasKilled) {
    int writes = 0;
    int journals = 0;
    for (bool isKilled = true; isKilled && writes < 1000; ++writes) {
        SCOPED_TRACE(writes);
        Trial on;
        on.library.connection().close();
        LibraryProcess process(
            {u"restore"_s, on.library.path(), on.ownFolder(), QString::number(writes)});
        const int status = process.wait();
        isKilled = status == -1;
        EXPECT_TRUE(isKilled || status == 0);
        const QString name = on.library.fileName() + u"*-journal"_s;
        journals += QDir(on.library.folder()).entryList({name}, QDir::Files).isEmpty() ? 0 : 1;
        RecordingQuestions questions;
        questions.answers = {true};
        EXPECT_TRUE(settleLeftBackup(on.ownFolder(), questions));
        EXPECT_TRUE(on.isAsBefore());
        on.expectSound();
    }
    EXPECT_GT(journals, 3);
}

}  // namespace
}  // namespace varo::test
