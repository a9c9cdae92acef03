#include "platform/deploy/deploy_file.h"

#include <QDir>
#include <QFile>
#include <QStringEncoder>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using namespace Qt::Literals::StringLiterals;

namespace varo::deploy {
namespace {

constexpr char kSample[] =
    "; 公式库\n\n[Access]\nNodeCount=1\nRootNodeText1=结构力学\nRootNodePath1=C:\\库\\temp\\new\\";

class DeployFile : public testing::Test {
  protected:
    DeployFile() {
        file_.setFolder(folder_.path() + u'/');
        file_.setFileName(u"Varo-Pelm.ini"_s);
    }

    QString path() const { return folder_.filePath(u"Varo-Pelm.ini"_s); }

    void store(const QByteArray& bytes) {
        QFile file(path());
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        ASSERT_EQ(file.write(bytes), bytes.size());
    }

    bool reads(const QByteArray& bytes) {
        store(bytes);
        return file_.check();
    }

    QByteArray stored() const {
        QFile file(path());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    /// Value of a key of "Access"; a mark that no file holds when it is missing.
    QString value(const QString& key) {
        QString found = u"<missing>"_s;
        file_.readValue(u"Access"_s, key, found);
        return found;
    }

    QTemporaryDir folder_;
    DeployFileLib file_;
};

template <typename Encoding>
QByteArray encode(Encoding encoding, const QByteArray& utf8) {
    QStringEncoder encoder(encoding, QStringConverter::Flag::WriteBom);
    return encoder(QString::fromUtf8(utf8));
}

TEST_F(DeployFile, ReadsEveryEncodingInUse) {
    const std::pair<const char*, QByteArray> table[] = {
        {"UTF-8", kSample},
        {"UTF-8 with a mark", QByteArray("\xEF\xBB\xBF") + kSample},
        {"UTF-16 little endian", encode(QStringConverter::Utf16LE, kSample)},
        {"UTF-16 big endian", encode(QStringConverter::Utf16BE, kSample)},
        {"GB18030 with Windows line ends",
         encode("GB18030", QByteArray(kSample).replace("\n", "\r\n"))}};
    for (const auto& [encoding, bytes] : table) {
        SCOPED_TRACE(encoding);
        ASSERT_TRUE(reads(bytes)) << file_.lastError().toStdString();
        EXPECT_EQ(value(u"NodeCount"_s), u"1");
        EXPECT_EQ(value(u"RootNodeText1"_s), u"结构力学");
        EXPECT_EQ(value(u"RootNodePath1"_s), uR"(C:\库\temp\new\)");
    }
}

TEST_F(DeployFile, RefusesAndNeverReplacesWhatIsNoText) {
    const std::pair<const char*, QByteArray> table[] = {
        {"NUL characters", QByteArray(kSample) + QByteArray(8, '\0')},
        {"control characters", QByteArray(kSample) + "\x02"},
        {"an end-of-file mark before the end", QByteArray(kSample) + "\x1A\n"},
        {"half a UTF-16 character", encode(QStringConverter::Utf16LE, kSample).chopped(1)},
        {"an unpaired surrogate", QByteArray("\xFF\xFE\x00\xD8[\x00", 6)},
        {"half a GB18030 character", encode("GB18030", "NodeCount=库").chopped(1)},
        {"bytes of no encoding", QByteArray("[Access]\n\xFF\xFF=1")},
    };
    for (const auto& [what, bytes] : table) {
        SCOPED_TRACE(what);
        EXPECT_FALSE(reads(bytes));
        EXPECT_EQ(file_.lastError(), u"配置文件“%1”不是文本文件！"_s.arg(path()));
        EXPECT_FALSE(file_.prepareSection(u"Access"_s));
        EXPECT_FALSE(file_.writeValue(u"Access"_s, u"NodeCount"_s, u"1"_s));
        EXPECT_FALSE(file_.save());
        EXPECT_EQ(stored(), bytes);
    }
}

TEST_F(DeployFile, SaysThatTheFileIsMissingHugeOrAFolder) {
    EXPECT_FALSE(file_.check());
    EXPECT_EQ(file_.lastError(), u"配置文件“%1”不存在！"_s.arg(path()));
    QString untouched = u"before"_s;
    EXPECT_FALSE(file_.readValue(u"Access"_s, u"NodeCount"_s, untouched));
    EXPECT_EQ(untouched, u"before");
    EXPECT_FALSE(
        reads("[Access]\nNodeCount=1\n" + ("\n;" + QByteArray(1 << 20, 'a')).repeated(17)));
    EXPECT_TRUE(file_.lastError().contains(u"太大"));
    ASSERT_TRUE(QFile::remove(path()) && QDir().mkdir(path()));
    EXPECT_FALSE(file_.check());
    EXPECT_TRUE(file_.lastError().contains(u"不是文件"));
    EXPECT_FALSE(file_.save());
}

TEST_F(DeployFile, ChecksRequiredKeysAndNamesTheMissingOne) {
    store("[Access]\nNodeCount=1\nRootNodeText1=\n");
    file_.requireKey(u"access"_s, u"nodecount"_s);
    file_.requireKey(u"Access"_s, u"RootNodeText1"_s);
    EXPECT_TRUE(file_.check());
    EXPECT_EQ(value(u"RootNodeText1"_s), u"");

    QString cut;
    EXPECT_FALSE(file_.readValue(u"Access\0"_s, u"NodeCount"_s, cut));
    EXPECT_FALSE(file_.readValue(u"Access"_s, u"NodeCount\0"_s, cut));

    file_.requireKey(u"Access"_s, u"RootNodeName1"_s);
    EXPECT_FALSE(file_.check());
    EXPECT_EQ(file_.lastError(),
              u"配置文件“%1”中缺少“Access”段的“RootNodeName1”项！"_s.arg(path()));

    file_.setFolder(folder_.path());
    EXPECT_EQ(file_.lastError(), u"");
    EXPECT_TRUE(file_.check());
}

TEST_F(DeployFile, ReadsValuesAsTheyStand) {
    const std::pair<const char*, QStringView> table[] = {
        {"K=a;b", u"a;b"},
        {"K=100%d%1", u"100%d%1"},
        {"K=x=y", u"x=y"},
        {"K = padded \t", u"padded"},
        {"K=\"  quoted  \"", u"  quoted  "},
        {"K=\"", u"\""},
        {"K=a\"b\"", u"a\"b\""},
        {"K=\\\\server\\new\\", u"\\\\server\\new\\"},
        {"k=first\nK=second", u"first"},
        {"K=one\n[Other]\nK=x\n[Access]\nK=two", u"one"},
        {"K=1\n\x1A", u"1"},
        {"\f[Other]\nK=x\n\f\n\f[Access]\n\fK=\fa\fb\f\n\f", u"a b"},
        {"K=5 \x80/m", u"5 €/m"},
        {"K=\xBF\xE2\x80\x81\x80\x95\x32\x82\x36\x80", u"库€亐𠀀€"},
    };
    for (const auto& [line, expected] : table) {
        SCOPED_TRACE(line);
        ASSERT_TRUE(reads(QByteArray("[Access]\n") + line));
        EXPECT_EQ(value(u"K"_s), expected);
    }
}

TEST_F(DeployFile, ReadsBackEverySingleLineThatItWrites) {
    const QStringList values =
        u"| leading|trailing\t|\"quoted\"|\"|\"\"|; no comment|[no section]|a=b|C:\\new\\|%1 %s|"
        "<<<END|公式库 𠀀|€"_s.split(u'|') +
        QStringList{QString(100000, u'长')};
    file_.prepareSection(u"Access"_s);
    for (int i = 0; i < values.size(); ++i) {
        ASSERT_TRUE(file_.writeValue(u"Access"_s, u"K%1"_s.arg(i), values[i]));
    }
    ASSERT_TRUE(file_.save() && file_.check());
    for (int i = 0; i < values.size(); ++i) {
        EXPECT_EQ(value(u"K%1"_s.arg(i)), values[i]);
    }
}

TEST_F(DeployFile, RefusesToWriteWhatWouldBreakTheFile) {
    store(kSample);
    for (const QString& text : {u"two\nlines"_s, u"a\rb"_s, u"a\fb"_s, QString(QChar(0))}) {
        EXPECT_FALSE(file_.writeValue(u"Access"_s, u"K"_s, text));
    }
    for (const QString& key : {u"a=b"_s, u""_s, u";K"_s}) {
        EXPECT_FALSE(file_.writeValue(u"Access"_s, key, u"1"_s));
    }
    EXPECT_FALSE(file_.writeValue(u"Acc]ess"_s, u"K"_s, u"1"_s));
    EXPECT_FALSE(file_.lastError().isEmpty());
    ASSERT_TRUE(file_.save() && file_.check());
    EXPECT_EQ(value(u"RootNodeText1"_s), u"结构力学");
}

TEST_F(DeployFile, KeepsCommentsAndForeignKeysWhenItWrites) {
    store(
        "; the file\n\n[\n"
        "[Host]\nLast=1\nLast=2\n\n"
        "[Open\nLast=3\n\n"
        "# the libraries\n[Access]\n"
        "; how many\nNodeCount=2\nRootNodeText1=a\nRootNodeText2=b\n\n"
        "[Window]\nWidth=100\n"
        "; the end\n [");
    ASSERT_TRUE(file_.prepareSection(u"Access"_s));
    EXPECT_EQ(value(u"NodeCount"_s), u"<missing>");
    ASSERT_TRUE(file_.writeValue(u"Access"_s, u"NodeCount"_s, u"1"_s));
    ASSERT_TRUE(file_.writeValue(u"Access"_s, u"RootNodeText1"_s, u"c"_s));
    ASSERT_TRUE(file_.save());
    const QByteArray once = stored();
    EXPECT_EQ(once.simplified().toStdString(),
              "; the file [Host] Last=1 Last=2 [Open] Last=3 # the libraries [Access] ; how many "
              "NodeCount=1 "
              "RootNodeText1=c [Window] Width=100 ; the end");

    ASSERT_TRUE(file_.check() && file_.save());
    EXPECT_EQ(stored(), once);

    // What looks like the mark of a file comes to its beginning.
    ASSERT_TRUE(reads("a line without a value\n\uFEFFK=1\n") && file_.save());
    EXPECT_EQ(stored(), "\n\uFEFFK=1\n");
}

TEST_F(DeployFile, WritesANewFileAsUtf8AndAnotherOneAsItIsEncoded) {
    file_.setFolder(folder_.filePath(u"gone"_s));
    ASSERT_TRUE(file_.prepareSection(u"Access"_s));
    EXPECT_FALSE(file_.save());
    EXPECT_TRUE(file_.lastError().contains(u"无法写入配置文件"));
    file_.setFolder(folder_.path());
    ASSERT_TRUE(file_.prepareSection(u"Access"_s));
    ASSERT_TRUE(file_.writeValue(u"Access"_s, u"RootNodeText1"_s, u"力学"_s));
    ASSERT_TRUE(file_.save());
    EXPECT_EQ(stored().toStdString(), "[Access]\nRootNodeText1=力学\n");
    ASSERT_TRUE(file_.writeValue(u"Access"_s, u"NodeCount"_s, u"9"_s));

    const QByteArray text = "[Access]\nRootNodeText1=结构力学\nNodeCount=1\n";
    const QByteArray windows = QByteArray(text).replace("\n", "\r\n");
    const QByteArray files[] = {
        text, "\xEF\xBB\xBF" + text, encode(QStringConverter::Utf16LE, windows),
        encode(QStringConverter::Utf16BE, text), encode("GB18030", windows)};
    for (const QByteArray& file : files) {
        ASSERT_TRUE(reads(file));
        EXPECT_EQ(value(u"NodeCount"_s), u"1") << "check() forgets what was not saved";
        ASSERT_TRUE(file_.save());
        EXPECT_EQ(stored(), file);
    }
    // In GB18030 the bytes of these two characters are those of others in UTF-8.
    ASSERT_TRUE(file_.writeValue(u"Access"_s, u"RootNodeText1"_s, u"联通"_s));
    ASSERT_TRUE(file_.save() && file_.check());
    EXPECT_EQ(value(u"RootNodeText1"_s), u"联通");
}

TEST_F(DeployFile, ContinuesAnEarlierVersionThatWasPutAside) {
    store(encode("GB18030", kSample));
    ASSERT_TRUE(QFile::rename(path(), folder_.filePath(u"old.def"_s)));
    file_.setSource(u"old.def"_s);
    EXPECT_EQ(value(u"RootNodeText1"_s), u"结构力学");
    ASSERT_TRUE(file_.writeValue(u"Access"_s, u"NodeCount"_s, u"2"_s) && file_.save());
    EXPECT_TRUE(stored().contains(encode("GB18030", "结构力学")));
    file_.setFolder(folder_.path());
    EXPECT_EQ(value(u"NodeCount"_s), u"2");
}

}  // namespace
}  // namespace varo::deploy
