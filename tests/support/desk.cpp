#include "support/desk.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QTest>
#include <QToolBar>
#include <QVBoxLayout>

namespace varo::test {

TestConfiguration::TestConfiguration(std::initializer_list<const TestLibrary*> libraries) {
    for (const TestLibrary* library : libraries) {
        addLibrary(*library, QStringLiteral("库%1").arg(count_ + 1));
    }
}

void TestConfiguration::addLibrary(const TestLibrary& library, const QString& text) {
    addLibrary(text, library.folder(), library.fileName());
}

void TestConfiguration::addLibrary(const QString& text, const QString& folder,
                                   const QString& fileName) {
    const QByteArray number = QByteArray::number(++count_);
    entries_ += "RootNodeText" + number + "=" + text.toUtf8() + "\nRootNodeName" + number + "=" +
                fileName.toUtf8() + "\nRootNodePath" + number + "=" + folder.toUtf8() + "\n";
    write("[Access]\nNodeCount=" + QByteArray::number(count_) + "\n" + entries_);
}

void TestConfiguration::write(const QByteArray& bytes) const {
    QFile file(folder_.filePath(QStringLiteral("Varo-Pelm.ini")));
    if (!file.open(QIODevice::WriteOnly) || file.write(bytes) != bytes.size()) {
        throw std::runtime_error("cannot write the configuration file");
    }
}

void TestConfiguration::removeFile() const {
    QFile::remove(folder_.filePath(QStringLiteral("Varo-Pelm.ini")));
}

Desk::Desk(const QString& configurationFolder, QSize size)
    : control_(new Varo_CalcEx(this, &questions_)) {
    auto* layout = new QVBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(control_);
    control_->setWorkFolder(workFolder_.path());
    connect(control_, &Varo_CalcEx::GetPropValue, this,
            [this](const QString& name, bool& answered) {
                askedProperties.append(name);
                if (properties.contains(name)) {
                    control_->SetSelPropValue(properties.value(name));
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
    delete control_;
}

void Desk::run(const QString& configurationFolder) {
    configurationFolder_ = configurationFolder;
    control_->SetDeployFolder(configurationFolder);
    control_->RunCalc();
    settle();
}

void settle() {
    // What was queued may have queued more.
    for (int round = 0; round < 3; ++round) {
        QCoreApplication::processEvents();
    }
}

namespace {

void visit(const QAbstractItemModel& model, const QModelIndex& parent, int depth,
           const std::function<bool(const QModelIndex&, int)>& goOn) {
    for (int row = 0; row < model.rowCount(parent); ++row) {
        const QModelIndex index = model.index(row, 0, parent);
        if (!goOn(index, depth)) {
            return;
        }
        visit(model, index, depth + 1, goOn);
    }
}

QStringList texts(const ui::NodeView& view) {
    QStringList result;
    visit(*view.model(), {}, 0, [&](const QModelIndex& index, int depth) {
        result.append(QString(2 * depth, u' ') + index.data().toString());
        return true;
    });
    return result;
}

void click(ui::NodeView& view, const QModelIndex& index, Qt::MouseButton button = Qt::LeftButton) {
    if (!index.isValid()) {
        throw std::logic_error("no such item to click");
    }
    view.scrollTo(index);
    settle();
    const QRect rect = view.visualRect(index);
    QTest::mouseClick(view.viewport(), button, {}, {rect.left() + 8, rect.center().y()});
    settle();
}

}  // namespace

QModelIndex Desk::find(const ui::NodeView& view, const QString& text) {
    QModelIndex found;
    visit(*view.model(), {}, 0, [&](const QModelIndex& index, int) {
        if (!found.isValid() && index.data().toString() == text) {
            found = index;
        }
        return !found.isValid();
    });
    return found;
}

QStringList Desk::treeTexts() {
    return texts(tree());
}
QStringList Desk::listTexts() {
    return texts(list());
}

QStringList Desk::gridTexts() {
    return textsOf(grid());
}

void Desk::clickNode(const QString& text) {
    click(tree(), find(tree(), text));
}
void Desk::clickFormula(const QString& text) {
    click(list(), find(list(), text));
}

void Desk::clickEmptySpace(ui::NodeView& view, Qt::MouseButton button) {
    const QRect area = view.viewport()->rect();
    QTest::mouseClick(view.viewport(), button, {}, area.bottomLeft() + QPoint(5, -5));
    settle();
}

void Desk::clickButton(const char* name) {
    QTest::mouseClick(&child<QPushButton>(name), Qt::LeftButton);
    settle();
}

void Desk::openMenu(ui::NodeView& view, const QString& text) {
    click(view, find(view, text), Qt::RightButton);
}

void Desk::choose(const char* entry) {
    const QString name = QString::fromLatin1(entry);
    const QList<QAction*> actions = menu().actions();
    const auto found = std::ranges::find(actions, name, &QObject::objectName);
    if (!menu().isVisible() || found == actions.end()) {
        throw std::logic_error(entry);
    }
    QTest::mouseClick(&menu(), Qt::LeftButton, {}, menu().actionGeometry(*found).center());
    settle();
}

QToolButton& Desk::editButton(const QString& key) {
    return *child<QToolBar>("tbEdit").findChild<QToolButton*>(key);
}

void Desk::clickEditButton(const QString& key) {
    QTest::mouseClick(&editButton(key), Qt::LeftButton);
    settle();
}

QLineEdit* Desk::labelEditor() {
    for (auto* editor : control_->findChildren<QLineEdit*>(QStringLiteral("labelEditor"))) {
        if (editor->isVisible()) {
            return editor;
        }
    }
    return nullptr;
}

void Desk::typeLabel(const QString& text, Qt::Key key) {
    QLineEdit* editor = labelEditor();
    if (editor == nullptr) {
        throw std::logic_error("no label is being edited");
    }
    editor->selectAll();
    editor->insert(text);
    QTest::keyClick(editor, key);
    settle();
}

QString Desk::value(const QString& variable) {
    return grid().GetCellText(rowOf(grid(), variable), 1);
}

void Desk::typeValue(const QString& variable, const QString& value) {
    QTest::keyClick(&beginTyping(grid(), variable, value), Qt::Key_Return);
    settle();
}

void Desk::type(QWidget& widget, const QString& text) {
    widget.setFocus();
    settle();
    QTest::keyClicks(&widget, text);
}

}  // namespace varo::test
