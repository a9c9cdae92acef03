#include "search/property_form.h"

#include "platform/ui/named_widgets.h"
#include "platform/ui/node_view.h"
#include "search/set_filter.h"

#include <QDialog>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSplitter>
#include <QVBoxLayout>

namespace varo {

namespace {

constexpr int kListWidth = 200;
constexpr int kFilterWidth = 580;

QPushButton* addButton(QHBoxLayout& row, const char* name, const QString& text) {
    auto* button = ui::makeNamed<QPushButton>(name, nullptr, text);
    button->setAutoDefault(false);
    row.addWidget(button);
    return button;
}

QGroupBox* addFrame(QSplitter& splitter, const char* name, const QString& title) {
    auto* frame = new QGroupBox(title);
    frame->setObjectName(QString::fromLatin1(name));
    splitter.addWidget(frame);
    return frame;
}

void buildProperties(QSplitter& splitter, PropertyForm& form) {
    QGroupBox* frame = addFrame(splitter, "frmProp", QStringLiteral("属性名称"));
    form.lvProp = ui::makeNamed<ui::NodeView>("lvProp", frame);
    form.lvProp->setAccessibleName(frame->title());
    form.lvProp->setRootIsDecorated(false);
    auto* buttons = new QHBoxLayout;
    form.cmdAddProp = addButton(*buttons, "cmdAddProp", QStringLiteral("添加"));
    form.cmdDelProp = addButton(*buttons, "cmdDelProp", QStringLiteral("删除"));
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(form.lvProp, 1);
    layout->addLayout(buttons);
}

void buildFilter(QSplitter& splitter, PropertySource& properties, PropertyForm& form) {
    QGroupBox* frame = addFrame(splitter, "frmFilter", QStringLiteral("过滤条件"));
    form.SetFilterProp = new SetFilter(properties, frame);
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    form.cmdSearch = addButton(*buttons, "cmdSearch", QStringLiteral("检查"));
    form.cmdSaveFilter = addButton(*buttons, "cmdSaveFilter", QStringLiteral("保存"));
    form.cmdDelFilter = addButton(*buttons, "cmdDelFilter", QStringLiteral("删除"));
    auto* layout = new QVBoxLayout(frame);
    layout->addWidget(form.SetFilterProp, 1);
    layout->addLayout(buttons);
}

}  // namespace

PropertyForm buildPropertyForm(QDialog& dialog, PropertySource& properties) {
    PropertyForm form;
    form.lblTitle = ui::makeNamed<QLabel>("lblTitle", &dialog);
    form.lblTitle->setTextFormat(Qt::PlainText);
    auto* splitter = new QSplitter(&dialog);
    splitter->setChildrenCollapsible(false);
    buildProperties(*splitter, form);
    buildFilter(*splitter, properties, form);
    splitter->setSizes({kListWidth, kFilterWidth});
    splitter->setStretchFactor(1, 1);
    const ui::DialogButtons made = ui::makeButtons(dialog);
    form.cmdOK = made.cmdOK;
    auto* buttons = new QHBoxLayout;
    buttons->addStretch(1);
    buttons->addWidget(made.cmdOK);
    buttons->addWidget(made.cmdCancel);
    auto* layout = new QVBoxLayout(&dialog);
    layout->addWidget(form.lblTitle);
    layout->addWidget(splitter, 1);
    layout->addLayout(buttons);
    return form;
}

}  // namespace varo
