#include "platform/deploy/deploy_file.h"

#include "platform/deploy/text_encoding.h"
#include "platform/files/regular_file.h"
#include "platform/files/save_file.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>
#include <QStringDecoder>

#include <map>
#include <string>
#include <utility>
#include <vector>

// The file's text is handed over as UTF-8, so that the parser has nothing to convert; and where the
// package keeps the bodies of its templates in a library, they are wanted here all the same.
#define SI_NO_CONVERSION
#define SI_IMPLEMENTATION
#include <SimpleIni.h>

namespace varo::deploy {

namespace {

constexpr qint64 kSizeLimit = 16 * 1024 * 1024;

/// The parser drops a comment that nothing follows. A section of this name, which no text can hold,
/// is put after everything while the file is in memory, so that the comment belongs to it.
constexpr char kEndMark[] = "[\x01]\n";

constexpr char kMark[] = "\xEF\xBB\xBF";  ///< U+FEFF

bool isBlank(char c) {
    return c == ' ' || c == '\t';
}

bool isQuoted(const QByteArray& text) {
    return text.size() >= 2 && text.front() == '"' && text.back() == '"';
}

/// As the value stands in the file: quoted where the parser or the reader would take something off.
QByteArray toFileForm(const QByteArray& value) {
    const bool plain = value.isEmpty() || (!isBlank(value.front()) && !isBlank(value.back()));
    return plain && !isQuoted(value) ? value : '"' + value + '"';
}

QByteArray fromFileForm(const QByteArray& text) {
    return isQuoted(text) ? text.mid(1, text.size() - 2) : text;
}

bool isOneLine(const QString& text) {
    return !text.contains(u'\n') && !text.contains(u'\r') && isText(text);
}

/// Names are written without quotes, so they must read back as they are.
bool isName(const QString& name, QChar separator) {
    return !name.isEmpty() && name == name.trimmed() && isOneLine(name) &&
           !QLatin1String(";#[").contains(name.front()) && !name.contains(separator);
}

}  // namespace

struct DeployFileLib::Data {
    QString folder;
    QString fileName;
    QString source;
    QString error;
    std::vector<std::pair<QString, QString>> required;

    CSimpleIniA ini{/*a_bIsUtf8=*/true, /*a_bMultiKey=*/true, /*a_bMultiLine=*/false};
    bool loaded = false;
    /// Comments of the keys that prepareSection() took away, by section and key in lower case.
    std::map<std::pair<QByteArray, QByteArray>, QByteArray> comments;

    TextEncoding encoding = TextEncoding::Utf8;  ///< of the file that was read last
    bool hasWindowsLineEnds = false;             ///< the same

    QString path() const { return QDir(folder).filePath(fileName); }
    QString sourcePath() const { return source.isEmpty() ? path() : QDir(folder).filePath(source); }

    bool fail(const QString& reason) {
        error = reason;
        return false;
    }

    void forget() {
        required.clear();
        source.clear();
        error.clear();
        unload();
    }

    void unload() {
        ini.Reset();
        comments.clear();
        encoding = TextEncoding::Utf8;
        hasWindowsLineEnds = false;
        loaded = false;
    }

    bool parse(const QString& text);
    bool load();
    bool loadIfExists();
    bool find(const QString& section, const QString& key, QByteArray& value);
    bool write(const QString& section, const QString& key, const QString& value);
};

bool DeployFileLib::Data::parse(const QString& text) {
    // The parser takes what follows a bracket that is not closed on its line for the section's
    // name, over the ends of lines.
    static const QRegularExpression kLoneBracket(QStringLiteral(R"(^[^\S\n]*\[[^\S\n]*$)"),
                                                 QRegularExpression::MultilineOption);
    static const QRegularExpression kOpenBracket(QStringLiteral(R"(^([^\S\n]*\[[^\]\n]*)$)"),
                                                 QRegularExpression::MultilineOption);
    QString lines = text;
    lines.replace(QLatin1StringView("\r\n"), QLatin1StringView("\n")).replace(u'\r', u'\n');
    lines.remove(kLoneBracket);
    lines.replace(kOpenBracket, QStringLiteral("\\1]"));
    const QByteArray utf8 = lines.toUtf8() + '\n' + kEndMark;
    if (ini.LoadData(utf8.constData(), static_cast<size_t>(utf8.size())) < 0) {
        return fail(QStringLiteral("没有足够的内存读取配置文件“%1”！").arg(sourcePath()));
    }
    loaded = true;
    return true;
}

bool DeployFileLib::Data::load() {
    unload();
    const QString readPath = sourcePath();
    QFile file(readPath);
    switch (openRegularFile(file)) {
        case RegularFileProblem::None:
            break;
        case RegularFileProblem::Missing:
            return fail(QStringLiteral("配置文件“%1”不存在！").arg(readPath));
        case RegularFileProblem::NotRegular:
            return fail(QStringLiteral("“%1”不是文件，不能作为配置文件！").arg(readPath));
        case RegularFileProblem::NotReadable:
            return fail(
                QStringLiteral("无法打开配置文件“%1”：%2").arg(readPath, qt_error_string(errno)));
    }
    const qint64 size = file.size();
    if (size > kSizeLimit) {
        return fail(QStringLiteral("配置文件“%1”太大！").arg(readPath));
    }
    // Reading makes room for as many bytes as are asked for, however few come.
    const QByteArray bytes = file.read(size);
    if (file.error() != QFileDevice::NoError) {
        return fail(QStringLiteral("无法读取配置文件“%1”：%2").arg(readPath, file.errorString()));
    }
    const auto decoded = decodeText(bytes);
    if (!decoded) {
        return fail(QStringLiteral("配置文件“%1”不是文本文件！").arg(readPath));
    }
    encoding = decoded->encoding;
    hasWindowsLineEnds = decoded->text.contains(QLatin1StringView("\r\n"));
    return parse(decoded->text);
}

bool DeployFileLib::Data::loadIfExists() {
    if (loaded) {
        return true;
    }
    return QFileInfo::exists(sourcePath()) ? load() : parse(QString());
}

bool DeployFileLib::Data::find(const QString& section, const QString& key, QByteArray& value) {
    // The parser takes a name up to its first NUL character, which no name in a file has.
    const char* found = section.contains(QChar(0)) || key.contains(QChar(0))
                            ? nullptr
                            : ini.GetValue(section.toUtf8().constData(), key.toUtf8().constData());
    if (!found) {
        return fail(
            QStringLiteral("配置文件“%1”中缺少“%2”段的“%3”项！").arg(sourcePath(), section, key));
    }
    value = fromFileForm(found);
    return true;
}

bool DeployFileLib::Data::write(const QString& section, const QString& key, const QString& value) {
    const QByteArray sectionName = section.toUtf8();
    const QByteArray keyName = key.toUtf8();
    const auto comment = comments.find({sectionName.toLower(), keyName.toLower()});
    const char* commentText = comment == comments.end() ? nullptr : comment->second.constData();
    const auto result =
        ini.SetValue(sectionName.constData(), keyName.constData(),
                     toFileForm(value.toUtf8()).constData(), commentText, /*a_bForceReplace=*/true);
    if (result < 0) {
        return fail(QStringLiteral("没有足够的内存写入配置文件“%1”！").arg(path()));
    }
    return true;
}

DeployFileLib::DeployFileLib() : data_(std::make_unique<Data>()) {
    data_->ini.SetSpaces(false);
}

DeployFileLib::~DeployFileLib() = default;

void DeployFileLib::setFolder(const QString& folder) {
    data_->folder = folder;
    data_->forget();
}

void DeployFileLib::setFileName(const QString& fileName) {
    data_->fileName = fileName;
    data_->forget();
}

void DeployFileLib::setSource(const QString& fileName) {
    data_->unload();
    data_->source = fileName;
}

bool DeployFileLib::check() {
    if (!data_->load()) {
        return false;
    }
    for (const auto& [section, key] : data_->required) {
        QByteArray value;
        if (!data_->find(section, key, value)) {
            return false;
        }
    }
    return true;
}

bool DeployFileLib::requireKey(const QString& section, const QString& key) {
    data_->required.emplace_back(section, key);
    return true;
}

bool DeployFileLib::readValue(const QString& section, const QString& key, QString& value) {
    QByteArray found;
    if ((!data_->loaded && !data_->load()) || !data_->find(section, key, found)) {
        return false;
    }
    // A U+FEFF at the beginning is part of the value.
    value =
        QStringDecoder(QStringConverter::Utf8, QStringConverter::Flag::ConvertInitialBom)(found);
    return true;
}

bool DeployFileLib::prepareSection(const QString& section) {
    if (!isName(section, u']')) {
        return data_->fail(QStringLiteral("“%1”不能作为配置文件的段名！").arg(section));
    }
    if (!data_->loadIfExists()) {
        return false;
    }
    const QByteArray name = section.toUtf8();
    CSimpleIniA::TNamesDepend keys;
    data_->ini.GetAllKeys(name.constData(), keys);
    for (const auto& key : keys) {
        const QByteArray keyName = key.pItem;
        if (key.pComment) {
            data_->comments[{name.toLower(), keyName.toLower()}] = key.pComment;
        }
        data_->ini.Delete(name.constData(), keyName.constData());
    }
    if (data_->ini.SetValue(name.constData(), nullptr, nullptr) < 0) {
        return data_->fail(QStringLiteral("没有足够的内存写入配置文件“%1”！").arg(data_->path()));
    }
    return true;
}

bool DeployFileLib::writeValue(const QString& section, const QString& key, const QString& value) {
    if (!isName(section, u']') || !isName(key, u'=')) {
        return data_->fail(
            QStringLiteral("“%1”段的“%2”项的名称不能写入配置文件！").arg(section, key));
    }
    if (!isOneLine(value)) {
        return data_->fail(
            QStringLiteral("“%1”段的“%2”项的值含有换行或控制字符，不能写入配置文件！")
                .arg(section, key));
    }
    return data_->loadIfExists() && data_->write(section, key, value);
}

bool DeployFileLib::save() {
    if (!data_->loadIfExists()) {
        return false;
    }
    std::string text;
    if (data_->ini.Save(text) < 0) {
        return data_->fail(QStringLiteral("没有足够的内存写入配置文件“%1”！").arg(data_->path()));
    }
    QByteArray bytes = QByteArray::fromStdString(text);
    bytes.replace(kEndMark, QByteArray());
    bytes = bytes.trimmed() + '\n';
    if (bytes.startsWith(kMark)) {  // which would be taken off
        bytes.prepend('\n');
    }
    QString content = QString::fromUtf8(bytes);
    if (data_->hasWindowsLineEnds) {
        content.replace(u'\n', QLatin1StringView("\r\n"));
    }
    bytes = encodeText(content, data_->encoding);

    QSaveFile file(data_->path());
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size() ||
        !commitWritten(file)) {
        return data_->fail(
            QStringLiteral("无法写入配置文件“%1”：%2").arg(data_->path(), file.errorString()));
    }
    return true;
}

QString DeployFileLib::lastError() const {
    return data_->error;
}

}  // namespace varo::deploy
