#include "bench_files.h"

#include "platform/data/connection.h"
#include "store/library_connection.h"
#include "store/template.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QStringList>

namespace varo::bench {

void makeFolders(const QString& path, int count, LibraryFormat format) {
    createEmptyLibrary(path, format);
    data::Connection connection;
    connection.open(path);
    data::Transaction transaction(connection);
    for (int id = 1; id <= count; ++id) {
        connection.execute(QStringLiteral("insert into Tree(ID,Name,PID,OrderID) values(?,?,?,?)"),
                           {id, QStringLiteral("公式夹第%1号").arg(id), (id - 1) / 8, id});
    }
    transaction.commit();
}

void makeFormulas(const QString& path, int count, LibraryFormat format) {
    createEmptyLibrary(path, format);
    data::Connection connection;
    connection.open(path);
    data::Transaction transaction(connection);
    connection.execute(QStringLiteral("insert into Tree(ID,Name,PID,OrderID) values(1,'夹',0,1)"));
    addFormulas(connection, count);
    transaction.commit();
}

void addFormulas(data::Connection& connection, int count) {
    for (int id = 1; id <= count; ++id) {
        connection.execute(
            QStringLiteral("insert into Formula(ID,Name,Formula,Memo,PicType,PID,OrderID) "
                           "values(?,?,?,?,0,1,?)"),
            {id, QStringLiteral("公式%1").arg(id), QStringLiteral("q*L^4/(8*E*I)+%1").arg(id),
             QStringLiteral("q 均布载荷 (N/mm)；L 跨度 (mm)；E 弹性模量 (MPa)；I 惯性矩 (mm⁴)"),
             id});
    }
}

FolderRow subtreeFolder(int id) {
    return {QStringLiteral("公式夹第%1号").arg(id), id == 1 ? 0 : (id - 2) / 8 + 1, id};
}

FormulaRow subtreeFormula(int folder, int number) {
    return {QStringLiteral("公式%1之%2").arg(folder).arg(number),
            QStringLiteral("q*L^4/(8*E*I)+%1").arg(number),
            QStringLiteral("q 均布载荷 (N/mm)；L 跨度 (mm)；E 弹性模量 (MPa)；I 惯性矩 (mm⁴)")};
}

void makeSubtree(const QString& path, int folders, int formulasEach) {
    createEmptyLibrary(path);
    data::Connection connection;
    connection.open(path);
    data::Transaction transaction(connection);
    for (int id = 1; id <= folders; ++id) {
        const FolderRow folder = subtreeFolder(id);
        connection.execute(QStringLiteral("insert into Tree(ID,Name,PID,OrderID) values(?,?,?,?)"),
                           {id, folder.name, folder.parent, folder.order});
        for (int number = 1; number <= formulasEach; ++number) {
            const FormulaRow formula = subtreeFormula(id, number);
            connection.execute(
                QStringLiteral("insert into Formula(Name,Formula,Memo,PicType,PID,OrderID) "
                               "values(?,?,?,0,?,?)"),
                {formula.name, formula.expression, formula.memo, id, number});
        }
    }
    transaction.commit();
}

void makeValues(const QString& path, int rows, int perFormula, LibraryFormat format) {
    createEmptyLibrary(path, format);
    data::Connection connection;
    connection.open(path);
    data::Transaction transaction(connection);
    connection.execute(
        QStringLiteral("insert into Formula(ID,Name,Formula,Memo,PicType,PID,OrderID) "
                       "values(1,'式','v1+v2*v3^v4-v5/v6','',0,0,1)"));
    for (int i = 0; i < rows; ++i) {
        connection.execute(
            QStringLiteral("insert into RecentVar(VarName,FormulaID,Value) values(?,?,?)"),
            {QStringLiteral("v%1").arg(i % perFormula), i / perFormula, QString::number(i % 97)});
    }
    transaction.commit();
}

void makeFoldersAndFormulas(const QString& path, int folders, int formulas) {
    makeFolders(path, folders);
    data::Connection connection;
    connection.open(path);
    data::Transaction transaction(connection);
    for (int id = 1; id <= formulas; ++id) {
        const FormulaRow formula = subtreeFormula(id % folders + 1, id);
        connection.execute(
            QStringLiteral("insert into Formula(Name,Formula,Memo,PicType,PID,OrderID) "
                           "values(?,?,?,0,?,?)"),
            {formula.name, formula.expression, formula.memo, id % folders + 1, id});
    }
    transaction.commit();
}

void makePictures(const QString& path, int count) {
    makeFormulas(path, count);
    constexpr QSize kSize(640, 480);
    QImage image(kSize, QImage::Format_RGB32);
    for (int y = 0; y < kSize.height(); ++y) {
        for (int x = 0; x < kSize.width(); ++x) {
            image.setPixel(x, y, qRgb(x * y % 256, x % 256, y % 256));
        }
    }
    QByteArray bytes;
    QBuffer buffer(&bytes);
    image.save(&buffer, "jpg");
    data::Connection connection;
    connection.open(path);
    data::Transaction transaction(connection);
    connection.execute(QStringLiteral("update Formula set PicType = 2"));
    for (int id = 1; id <= count; ++id) {
        data::BlobField field =
            connection.field(QStringLiteral("Formula"), QStringLiteral("Pic"), id);
        field.replace(bytes.size());
        field.appendChunk({bytes.constData(), static_cast<std::size_t>(bytes.size())});
    }
    transaction.commit();
}

void makeConfiguration(const QString& folder, const QStringList& libraries) {
    QString text = QStringLiteral("[Access]\nNodeCount=%1\n").arg(libraries.size());
    int number = 0;
    for (const QString& library : libraries) {
        QString path;
        QString name;
        SplitFilePath(library, path, name);
        text += QStringLiteral("RootNodeText%1=%2\nRootNodeName%1=%2\nRootNodePath%1=%3\n")
                    .arg(QString::number(++number), name, path);
    }
    QFile file(folder + QStringLiteral("/Varo-Pelm.ini"));
    if (!file.open(QIODevice::WriteOnly) || file.write(text.toUtf8()) < 0) {
        throw data::Error(file.errorString());
    }
}

}  // namespace varo::bench
