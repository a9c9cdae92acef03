#include "support/desk.h"

#include <QFile>
#include <QTest>
#include <QVBoxLayout>

namespace varo::test {

using namespace Qt::StringLiterals;

TestConfiguration::TestConfiguration(std::initializer_list<const TestLibrary*> libraries) {
    for (const TestLibrary* library : libraries) {
        addLibrary(*library, u"库%1"_s.arg(count_ + 1));
    }
}

void TestConfiguration::addLibrary(const QString& text, const QString& folder,
                                   const QString& fileName) {
    const QByteArray number = QByteArray::number(++count_);
    entries_ += "RootNodeText" + number + "=" + text.toUtf8() + "\nRootNodeName" + number + "=" +
                fileName.toUtf8() + "\nRootNodePath" + number + "=" + folder.toUtf8() + "\n";
    write("[Access]\nNodeCount=" + QByteArray::number(count_) + "\n" + entries_);
}

void TestConfiguration::write(const QByteArray& bytes) const {
    QFile file(path_);
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw std::runtime_error("cannot write the configuration file");
    }
}

Desk::Desk(const QString& configurationFolder, QSize size) {
    setControl(*new Varo_CalcEx(this, &questions_));
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(&control());
    control().setWorkFolder(workFolder_.path());
    connect(&control(), &Varo_CalcEx::GetPropValue, this,
            [this](const QString& name, bool& answered) {
                askedProperties.append(name);
                if (properties.contains(name)) {
                    control().SetSelPropValue(properties.value(name));
                    answered = true;
                }
            });
    resize(size);
    show();
    activateWindow();
    if (!QTest::qWaitForWindowActive(this)) {
        throw std::runtime_error("the window does not become active");
    }
    if (!configurationFolder.isEmpty()) {
        run(configurationFolder);
    }
}

Desk::~Desk() {
    // The control still tells the questions of this desk what it has to say while it goes.
    delete &control();
}

void Desk::run(const QString& configurationFolder) {
    configurationFolder_ = configurationFolder;
    control().SetDeployFolder(configurationFolder);
    control().RunCalc();
    settle();
}

}  // namespace varo::test
