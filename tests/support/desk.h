#pragma once

#include "driver/control_driver.h"
#include "support/recording_questions.h"
#include "support/test_library.h"

#include <QHash>
#include <QPushButton>
#include <QTemporaryDir>
#include <QWidget>

namespace varo::test {

using varo::settle;

/// A configuration folder whose file names libraries.
class TestConfiguration {
  public:
    TestConfiguration() = default;
    explicit TestConfiguration(std::initializer_list<const TestLibrary*> libraries);

    QString folder() const { return folder_.path(); }
    void addLibrary(const QString& text, const QString& folder, const QString& fileName);
    void addLibrary(const TestLibrary& library, const QString& text) {
        addLibrary(text, library.folder(), library.fileName());
    }
    /// Replaces the file by these bytes.
    void write(const QByteArray& bytes) const;
    void removeFile() const { QFile::remove(path_); }

  private:
    QTemporaryDir folder_;
    const QString path_ = folder_.filePath(QStringLiteral("Varo-Pelm.ini"));
    QByteArray entries_;
    int count_ = 0;
};

/// A host window on the screen with the control in it, as a user would work with it. Messages are
/// recorded; the host answers properties from a table.
class Desk : public QWidget, public ControlDriver {
  public:
    explicit Desk(const QString& configurationFolder = {}, QSize size = {1000, 700});
    ~Desk() override;

    using ControlDriver::find;
    using ControlDriver::isEnabled;

    /// Names the folder and starts the control.
    void run(const QString& configurationFolder);

    QString configurationFolder() const { return configurationFolder_; }
    RecordingQuestions& questions() { return questions_; }
    QStringList messages() const { return questions_.informed; }

    /// What the host answers when it is asked for a property, and what it was asked for.
    QHash<QString, QString> properties;
    QStringList askedProperties;

  private:
    RecordingQuestions questions_;
    QTemporaryDir workFolder_;
    QString configurationFolder_;
};

}  // namespace varo::test
