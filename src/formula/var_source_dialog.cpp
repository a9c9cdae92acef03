#include "formula/var_source_dialog.h"

#include "formula/select_database_dialog.h"
#include "formula/source_colors.h"
#include "platform/ui/dialogs.h"
#include "platform/ui/edit_grid.h"
#include "platform/ui/named_widgets.h"

#include <QBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QLineEdit>
#include <QPointer>

namespace varo {

namespace {

enum Column { NameColumn, TypeColumn, ParameterColumn };

/// What stands for each VarSource, in the order of their numbers.
const QStringList& typeTexts() {
    static const QStringList texts{QStringLiteral("无"), QStringLiteral("属性"),
                                   QStringLiteral("数据表")};
    return texts;
}

/// The source that a text of the grid stands for; nothing for another text.
std::optional<VarSource> typeOf(const QString& text) {
    const qsizetype type = typeTexts().indexOf(text);
    return type < 0 ? std::nullopt : std::optional(static_cast<VarSource>(type));
}

}  // namespace

VarSourceDialog::VarSourceDialog(const QString& expression, qint32 formulaID,
                                 CurrentLibrary& library, Questions& questions, QWidget* parent)
    : QDialog(parent),
      expression_(expression),
      questions_(questions),
      sources_(library, formulaID),
      txtFormula_(ui::makeNamed<QLineEdit>("txtFormula", this)),
      MSFEditVarSource_(ui::makeNamed<ui::EditGrid>("MSFEditVarSource", this)) {
    setObjectName(QStringLiteral("frmVarSource"));
    setWindowTitle(QStringLiteral("变量值的来源"));
    txtFormula_->setReadOnly(true);
    txtFormula_->setContextMenuPolicy(Qt::PreventContextMenu);
    buildGrid();
    buildLayout();
    connect(MSFEditVarSource_, &ui::EditGrid::CellEdited, this, &VarSourceDialog::takeEdit);
    connect(MSFEditVarSource_, &ui::EditGrid::CellButtonClick, this, &VarSourceDialog::pickTable);
}

void VarSourceDialog::buildLayout() {
    auto* formulaLabel = new QLabel(QStringLiteral("表达式："), this);
    auto* title = new QLabel(QStringLiteral("变量值来源"), this);
    auto* formulaRow = new QHBoxLayout;
    formulaRow->addWidget(formulaLabel);
    formulaRow->addWidget(txtFormula_, 1);
    const ui::DialogButtons buttons = ui::makeButtons(*this);
    auto* bottom = new QHBoxLayout;
    bottom->addStretch();
    bottom->addWidget(buttons.cmdOK);
    bottom->addWidget(buttons.cmdCancel);
    auto* layout = new QVBoxLayout(this);
    layout->addLayout(formulaRow);
    layout->addWidget(title);
    layout->addWidget(MSFEditVarSource_, 1);
    layout->addLayout(bottom);
    resize(480, 340);
    connect(buttons.cmdOK, &QPushButton::clicked, this, &VarSourceDialog::accept);
}

void VarSourceDialog::buildGrid() {
    ui::EditGrid& grid = *MSFEditVarSource_;
    grid.setAccessibleName(QStringLiteral("变量值来源"));
    grid.SetCols(3);
    constexpr int kWidths[] = {1000, 1000, 2000};  // twips
    const QString headers[] = {QStringLiteral("变量名称"), QStringLiteral("数据来源"),
                               QStringLiteral("参数")};
    for (const int column : {NameColumn, TypeColumn, ParameterColumn}) {
        grid.SetColWidth(column, kWidths[column]);
        grid.SetCellText(0, column, headers[column]);
        grid.SetColEditable(column, column != NameColumn);
    }
    grid.horizontalHeader()->setStretchLastSection(true);
    grid.SetColEditStyle(TypeColumn, ui::EditStyle::DropDown);
    for (const QString& text : typeTexts()) {
        grid.AddListItem(text);
    }
}

bool VarSourceDialog::SetConnection(const QString& ThePath, const QString& TheName,
                                    const QString& ThePassword) {
    folder_ = ThePath;
    return sources_.connect(ThePath, TheName, ThePassword);
}

void VarSourceDialog::InitForm() {
    txtFormula_->setText(expression_);
    // The selection begins at its end, so that the caret is at 0.
    txtFormula_->setSelection(static_cast<int>(expression_.size()),
                              -static_cast<int>(expression_.size()));
    formula_.setText(expression_);
    const QStringList& names = formula_.variables();
    MSFEditVarSource_->SetRows(static_cast<int>(names.size()) + 1);
    for (qsizetype i = 0; i < names.size(); ++i) {
        fillRow(static_cast<int>(i) + 1, names[i]);
    }
    MSFEditVarSource_->setCurrentCell(0, TypeColumn);
    MSFEditVarSource_->setFocus();
}

void VarSourceDialog::fillRow(int row, const QString& name) {
    ui::EditGrid& grid = *MSFEditVarSource_;
    const VariableSource source = sources_.stored(name);
    grid.SetCellText(row, NameColumn, name);
    grid.SetCellText(row, TypeColumn, typeTexts().value(source.type));
    grid.SetCellText(row, ParameterColumn, source.parameter);
    if (!source.isRead) {
        grid.SetCellNote(row, TypeColumn, QStringLiteral("无法读取存储的来源"));
    }
    showType(row, source.type);
}

void VarSourceDialog::showType(int row, qint32 type) {
    ui::EditGrid& grid = *MSFEditVarSource_;
    grid.SetCellForeColor(row, NameColumn, nameColorOf(type));
    grid.SetCellEditStyle(row, ParameterColumn,
                          type == VarSourceTable ? ui::EditStyle::Button : ui::EditStyle::Plain);
    grid.SetCellSuggestions(row, ParameterColumn,
                            type == VarSourceProperty ? propertyNames() : QStringList());
}

const QStringList& VarSourceDialog::propertyNames() {
    if (!propertyNames_) {
        propertyNames_ = sources_.propertyNames();
    }
    return *propertyNames_;
}

void VarSourceDialog::takeEdit(int row, int column, const QString& text) {
    ui::EditGrid& grid = *MSFEditVarSource_;
    const QString name = grid.GetCellText(row, NameColumn);
    const auto type = typeOf(grid.GetCellText(row, TypeColumn));
    if (!type) {
        grid.SetCellText(row, column, sources_.stored(name).parameter);
        return;  // a source that is not known has no parameter to be edited
    }
    if (column == TypeColumn) {
        grid.SetCellNote(row, TypeColumn, QString());
        grid.SetCellText(row, ParameterColumn, QString());
        showType(row, *type);
        sources_.setType(name, *type);
    } else if (column == ParameterColumn) {
        // A blank at an end could not be seen.
        const QString parameter = text.trimmed();
        grid.SetCellText(row, ParameterColumn, parameter);
        sources_.setParameter(name, *type, parameter);
    }
}

void VarSourceDialog::pickTable(int row, int column) {
    ui::EditGrid& grid = *MSFEditVarSource_;
    grid.commitEdit();
    const QPointer<SelectDatabaseDialog> dialog =
        new SelectDatabaseDialog(folder_, questions_, this);
    dialog->InitForm(grid.GetCellText(row, column));
    ui::runDialog(*dialog);
    if (dialog.isNull()) {
        return;  // destroyed with this
    }
    if (!dialog->Cancelled()) {
        grid.SetCellText(row, column, dialog->parameter());
        sources_.setParameter(grid.GetCellText(row, NameColumn), VarSourceTable,
                              dialog->parameter());
    }
    delete dialog;
}

void VarSourceDialog::accept() {
    MSFEditVarSource_->commitEdit();
    const VariableSources::Fault fault = sources_.fault();
    if (!fault.text.isEmpty()) {
        questions_.inform(fault.text);
        for (int row = 1; row < MSFEditVarSource_->Rows(); ++row) {
            if (MSFEditVarSource_->GetCellText(row, NameColumn) == fault.variable) {
                MSFEditVarSource_->setCurrentCell(row - 1, ParameterColumn);
            }
        }
        MSFEditVarSource_->setFocus();
        return;
    }
    const QString failure = sources_.store();
    if (!failure.isEmpty()) {
        questions_.inform(failure);
        return;
    }
    QDialog::accept();
}

}  // namespace varo
