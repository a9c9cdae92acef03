#include "library/library_list.h"

#include <QDir>
#include <QFileInfo>

#include <filesystem>
#include <system_error>
#include <vector>

namespace varo {

namespace {

/// What a record says, without its key.
struct Content {
    QString text;
    QString name;
    QString folder;
    QString tag;
};

Content contentOf(const clsFormulaDB& library) {
    return {library.FormulaNodeText, library.FormulaDBName, library.FormulaDBPath, library.Tag};
}

void setContent(clsFormulaDB& library, const Content& content) {
    library.FormulaNodeText = content.text;
    library.FormulaDBName = content.name;
    library.FormulaDBPath = content.folder;
    library.Tag = content.tag;
}

bool isSamePlace(const QString& one, const QString& other) {
    if (QDir::cleanPath(QFileInfo(one).absoluteFilePath()) ==
        QDir::cleanPath(QFileInfo(other).absoluteFilePath())) {
        return true;
    }
    std::error_code notThere;
    return std::filesystem::equivalent(QFileInfo(one).filesystemFilePath(),
                                       QFileInfo(other).filesystemFilePath(), notThere);
}

}  // namespace

QString pathOf(const clsFormulaDB& library) {
    return library.FormulaDBPath + library.FormulaDBName;
}

void copyLibraries(const colFormulaDB& from, colFormulaDB& to) {
    to.Clear();
    for (const clsFormulaDB& library : from) {
        QString key;
        bool added = false;
        to.Add(library.FormulaDBName, library.FormulaDBPath, library.FormulaNodeText, key,
               library.Tag, added);
    }
}

const clsFormulaDB* findLibrary(const colFormulaDB& libraries, const QString& path) {
    for (const clsFormulaDB& library : libraries) {
        if (isSamePlace(pathOf(library), path)) {
            return &library;
        }
    }
    return nullptr;
}

void moveLibraries(colFormulaDB& libraries, const QList<int>& positions, int before) {
    std::vector<Content> inFront;
    std::vector<Content> moved;
    std::vector<Content> behind;
    for (int position = 1; position <= libraries.Count(); ++position) {
        auto& part = positions.contains(position) ? moved : position < before ? inFront : behind;
        part.push_back(contentOf(libraries.Item(position)));
    }
    int position = 0;
    for (const auto* part : {&inFront, &moved, &behind}) {
        for (const Content& content : *part) {
            setContent(libraries.Item(++position), content);
        }
    }
}

}  // namespace varo
