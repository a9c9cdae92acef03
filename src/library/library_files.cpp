#include "library/library_files.h"

#include "library/library_list.h"
#include "library/picture_files.h"
#include "platform/questions/held_messages.h"
#include "store/db_funcs.h"

#include <QDir>
#include <QFileInfo>

namespace varo {

void SelectDataBase(SelectMode mode, QString& path, bool& ok, Questions& questions) {
    const auto kAnyLibrary = QStringLiteral("*.mdb");
    ok = false;
    const bool isNew = mode == SelectMode::New;
    const auto chosen =
        questions.chooseFile({isNew ? QStringLiteral("新建公式库") : QStringLiteral("添加公式库"),
                              {QStringLiteral("Access数据库文件 (*.mdb)")},
                              isNew ? FileQuestion::Purpose::New : FileQuestion::Purpose::Open,
                              kAnyLibrary});
    if (!chosen) {
        path = QStringLiteral("cancel");
        return;
    }
    path = chosen->path;
    if (QFileInfo(path).fileName().compare(kAnyLibrary, Qt::CaseInsensitive) == 0) {
        questions.inform(QStringLiteral("用户没有选择数据库，不能创建连接"));
        return;
    }
    path = withExtension(path, QStringLiteral(".mdb"));
    ok = true;
}

QString newLibraryText() {
    return QStringLiteral("新添加的公式库");
}

AddedLibrary AddExistingLibrary(const QString& path, const QString& text, colFormulaDB& libraries) {
    if (isMissing(path)) {
        return {{}, QStringLiteral("用户选择的数据库文件不存在\n不能添加到本程序！")};
    }
    if (findLibrary(libraries, path) != nullptr) {
        return {{}, QStringLiteral("用户选择的公式库已经被加入！")};
    }
    QString folder;
    QString name;
    SplitFilePath(QDir::cleanPath(QFileInfo(path).absoluteFilePath()), folder, name);
    data::Connection connection;
    if (!ConnectLibrary(folder, name, connection, QString())) {
        return {{}, QStringLiteral("无法打开用户选择的数据库！")};
    }
    HeldMessages none;  // checking shows nothing
    if (!clsDBFuncs(none).CheckNewDB(connection)) {
        return {{}, QStringLiteral("用户选择了错误结构的数据库文件\n不能添加到本程序！")};
    }
    AddedLibrary result;
    bool added = false;
    libraries.Add(name, folder, text, result.key, QString(), added);
    return result;
}

namespace {

/// What is to be done about the file beside a library that keeps it from being opened; "" when none
/// does.
QString sentenceOn(data::Error::Cause cause) {
    using enum data::Error::Cause;
    switch (cause) {
        case NoRegularFile:
            return QStringLiteral("文件旁边与日志同名（-journal、-wal、-shm）的不是普通文件");
        case ForeignJournal:
            return QStringLiteral("文件旁边的日志（-journal）不是这个公式库的");
        case UncertainJournal:
            return QStringLiteral(
                "无法确定文件旁边的日志（-journal）是不是这个公式库的："
                "请先复制这两个文件，再用写它的程序打开公式库");
        case ForeignLog:
            return QStringLiteral("文件旁边的预写日志（-wal）不是这个公式库的");
        case UncertainLog:
            return QStringLiteral(
                "无法确定文件旁边的预写日志（-wal）是不是这个公式库的："
                "请先复制这两个文件，再用写它的程序打开公式库");
        case NeedsRecovery:
            return QStringLiteral("上一次修改没有完成，要先恢复公式库，但是不能写这个文件");
        case ReadOnlyFolder:
            return QStringLiteral(
                "打开公式库前要先把它的预写日志（-wal）写入公式库，但是不能写公式库所在的文件夹");
        default:
            return {};
    }
}

QString sentenceOn(OpenFailure failure) {
    switch (failure) {
        case OpenFailure::None:
            break;
        case OpenFailure::Missing:
            return QStringLiteral("文件不存在");
        case OpenFailure::NotPermitted:
            return QStringLiteral("没有读取这个文件的权限");
        case OpenFailure::Locked:
            return QStringLiteral("文件正被其他程序占用");
        case OpenFailure::NoLibrary:
            return QStringLiteral("文件不是公式库，或者已经损坏");
        case OpenFailure::Structure:
            return QStringLiteral("文件的结构不符合公式库的要求");
    }
    return {};
}

}  // namespace

QString reasonOf(const OpenResult& result) {
    QStringList lines{sentenceOn(result.failure)};
    if (result.failure == OpenFailure::NoLibrary) {
        lines += {sentenceOn(result.cause), QStringLiteral("数据库的说明：") + result.description};
        lines.removeAll(QString());
    }
    return lines.join(u'\n');
}

QString whyNotOpened(const clsFormulaDB& library) {
    data::Connection connection;
    const OpenResult result =
        openLibrary(library.FormulaDBPath, library.FormulaDBName, connection, data::Access::Glance);
    return result.cause == data::Error::Cause::NotCopied ? QString() : reasonOf(result);
}

}  // namespace varo
