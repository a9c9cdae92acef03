#pragma once

#include "library/clipboard.h"
#include "library/formula_reader.h"
#include "library/picture_store.h"
#include "support/beam_libraries.h"

#include <QDir>

#include <gtest/gtest.h>

namespace varo::test {

/// The beam libraries as a control has them, without its widgets: both configured, the first one
/// open, and its working files in a folder of their own.
struct OpenLibraries : BeamLibraries {
    OpenLibraries() {
        configure(first);
        configure(second);
        files.setFolder(work.path(), {});
        EXPECT_TRUE(library.open(1));
    }

    void configure(const TestLibrary& added) { addTo(libraries, added.folder(), added.fileName()); }

    /// A formula as it is listed, its picture in a file as it is shown.
    clsFormulaInfo record(qint32 id) {
        const int folder =
            first.rows(u"Select PID From Formula Where ID = %1"_s.arg(id)).value(0).toInt();
        colFormulaInfo formulas;
        const auto pictureOf = [this](qint32 formula) { return files.listedPicture(formula); };
        EXPECT_TRUE(readFormulas(library, folder, FormulaTexts::Shown, pictureOf, formulas));
        clsFormulaInfo found = *formulas.Find(id);
        if (!found.FormulaPicPath.isEmpty()) {
            extractPicture(library, id, found.FormulaPicPath, messages);
        }
        return found;
    }

    QString workFile(const QString& name) const { return work.filePath(name); }
    QStringList workFiles() const { return QDir(work.path()).entryList(QDir::Files); }

    /// What waits for the user, who has then been told.
    QStringList told() {
        messages.show(questions);
        return std::exchange(questions.informed, {});
    }

    QTemporaryDir work;
    RecordingQuestions questions;
    HeldMessages messages;
    colFormulaDB libraries;
    WorkingFiles files;
    CurrentLibrary library{libraries, questions};
    Clipboard clipboard{files};
    PictureStore pictures{library, files};
};

}  // namespace varo::test
