#include "library/new_library.h"

#include "library/library_files.h"
#include "library/picture_files.h"
#include "platform/data/copy_database.h"
#include "platform/shared_folder/shared_folder.h"
#include "store/attempt.h"
#include "store/template.h"

#include <QFileInfo>

namespace varo {

namespace {

QString notCreated() {
    return QStringLiteral("创建公式数据库失败！");
}

/// The template's path; "" when there is none that can be used, and `failure` says why.
QString usableTemplate(QString& failure) {
    const auto folder = GetVaroSharedFolder();
    if (!folder) {
        failure = notCreated();
        return {};
    }
    const QString path = *folder + QLatin1StringView(kTemplateFileName);
    if (!QFileInfo(path).isFile()) {
        failure = QStringLiteral("模板数据库文件丢失，不能创建新的数据库文件！");
        return {};
    }
    QString version;
    bool read = false;
    ReadTemplateInfo(*folder, QStringLiteral("DBVersion"), version, failure, read);
    if (!read) {
        return {};
    }
    if (version.trimmed().compare(QLatin1StringView(kTemplateVersion), Qt::CaseInsensitive) != 0) {
        failure = QStringLiteral("模板数据库的版本信息不正确，不能创建新的数据库文件！");
        return {};
    }
    return path;
}

}  // namespace

QString CreateLibraryFromTemplate(Questions& questions,
                                  const std::function<bool(const QString& path)>& isInUse) {
    QString failure;
    const QString source = usableTemplate(failure);
    if (source.isEmpty()) {
        questions.inform(failure);
        return {};
    }
    QString path;
    bool chosen = false;
    SelectDataBase(SelectMode::New, path, chosen, questions);
    if (!chosen) {
        return {};
    }
    const auto refuseUsed = [&] {
        const bool isTemplate = isSameFile(path, source);
        if (!isTemplate && !isInUse(path)) {
            return false;
        }
        questions.inform(notCreated() + u'\n' + path + u'\n' +
                         (isTemplate ? QStringLiteral("是模板数据库文件，不能替换！")
                                     : QStringLiteral("是正在使用的公式库，不能替换！")));
        return true;
    };
    if (refuseUsed()) {
        return {};
    }
    const QString question =
        QStringLiteral("文件：\n%1\n已经存在，\n是否替换原有的文件！").arg(path);
    if (QFileInfo::exists(path) && !questions.confirm(question, Choice::OkCancel)) {
        return {};
    }
    // The host may have opened the library while the user was asked.
    if (refuseUsed()) {
        return {};
    }
    if (!attempt([&] { data::copyDatabase(source, path); })) {
        questions.inform(notCreated());
        return {};
    }
    return path;
}

}  // namespace varo
