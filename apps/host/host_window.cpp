#include "host/host_window.h"

#include "control/varo_calcex.h"
#include "host/cell_info_panel.h"
#include "host/line_list.h"
#include "host/locate_report.h"
#include "host/named_widget.h"
#include "host/property_table.h"
#include "platform/ui/node_view.h"
#include "platform/ui/registered_message.h"

#include <QDockWidget>
#include <QFileDialog>
#include <QInputDialog>
#include <QMenuBar>
#include <QVBoxLayout>

#include <functional>
#include <optional>
#include <tuple>

namespace varo::host {

namespace {

constexpr QSize kInitialSize(1240, 800);
constexpr int kDockWidth = 270;

/// Asks the user for an argument of `method`; nothing when the user cancels.
std::optional<QString> askArgument(QWidget* parent, const QString& method, const QString& name,
                                   const QString& initial = {}) {
    QInputDialog dialog(parent);
    dialog.setWindowTitle(method);
    dialog.setLabelText(name);
    dialog.setTextValue(initial);
    dialog.setOkButtonText(QStringLiteral("确定"));
    dialog.setCancelButtonText(QStringLiteral("取消"));
    if (dialog.exec() != QDialog::Accepted) {
        return std::nullopt;
    }
    return dialog.textValue();
}

QString joined(const CellNumbers& numbers) {
    QStringList texts;
    for (const qint32 number : numbers) {
        texts.append(QString::number(number));
    }
    return texts.join(QStringLiteral(", "));
}

template <class Content>
Content* addDock(QMainWindow& window, const QString& title, const QString& name) {
    auto* dock = new QDockWidget(title, &window);
    dock->setObjectName(name);
    // Nothing brings a closed one back.
    dock->setFeatures(QDockWidget::DockWidgetMovable | QDockWidget::DockWidgetFloatable);
    auto* content = new Content(dock);
    dock->setWidget(content);
    window.addDockWidget(Qt::RightDockWidgetArea, dock);
    return content;
}

}  // namespace

HostWindow::HostWindow(Questions* questions)
    : questions_(questions),
      calcMessage_(ui::registerWindowMessage(QString::fromLatin1(Varo_CalcEx::kCalcMessage))) {
    setWindowTitle(QStringLiteral("公式计算控件的宿主程序"));
    buildDocks();
    setCentralWidget(new QWidget(this));
    auto* place = new QVBoxLayout(centralWidget());
    place->setContentsMargins(0, 0, 0, 0);
    embedControl();
    buildFileMenu();
    buildControlMenu();
    resize(kInitialSize);
    resizeDocks({findChild<QDockWidget*>(QStringLiteral("propertyDock"))}, {kDockWidth},
                Qt::Horizontal);
}

// The control goes before what answers it.
HostWindow::~HostWindow() {
    delete control_;
}

void HostWindow::embedControl() {
    // The control that was there stores what is still being edited before its libraries open again.
    delete control_;
    control_ = new Varo_CalcEx(centralWidget(), questions_);
    control_->setWorkFolder(workFolder_.path());
    connect(control_, &Varo_CalcEx::GetPropValue, this, &HostWindow::answer);
    centralWidget()->layout()->addWidget(control_);
}

void HostWindow::openFolder(const QString& folder) {
    embedControl();
    control_->SetDeployFolder(folder);
    log_->append(QStringLiteral("SetDeployFolder %1").arg(folder));
    runCalc();
}

void HostWindow::runCalc() {
    log_->append(QStringLiteral("RunCalc"));
    control_->RunCalc();
}

void HostWindow::answer(const QString& property, bool& answered) {
    const std::optional<QString> value = properties_->valueOf(property);
    if (!value) {
        log_->append(QStringLiteral("GetPropValue %1：没有这个属性").arg(property));
        return;
    }
    log_->append(QStringLiteral("GetPropValue %1 = %2").arg(property, *value));
    control_->SetSelPropValue(*value);
    answered = true;
}

bool HostWindow::event(QEvent* event) {
    if (event->type() == calcMessage_) {
        const auto& message = static_cast<const ui::RegisteredMessage&>(*event);
        results_->append(ui::windowText(message.lParam));
        return true;
    }
    return QMainWindow::event(event);
}

void HostWindow::writeCellInfo() {
    const CellNumbers numbers = cellInfo_->numbers();
    log_->append(QStringLiteral("SetCellInfo %1").arg(joined(numbers)));
    std::apply([this](auto... number) { control_->SetCellInfo(number...); }, numbers);
}

void HostWindow::readCellInfo() {
    CellNumbers numbers{};
    std::apply([this](auto&... number) { control_->GetCellInfo(number...); }, numbers);
    log_->append(QStringLiteral("GetCellInfo %1").arg(joined(numbers)));
    cellInfo_->setNumbers(numbers);
}

void HostWindow::chooseFolder() {
    const QString folder = QFileDialog::getExistingDirectory(this, QStringLiteral("选择配置文件夹"),
                                                             {}, QFileDialog::ShowDirsOnly);
    if (!folder.isEmpty()) {
        openFolder(folder);
    }
}

void HostWindow::buildFileMenu() {
    QMenu* menu = menuBar()->addMenu(QStringLiteral("文件(&F)"));
    menu->addAction(QStringLiteral("选择配置文件夹(&O)…"), QKeySequence::Open, this,
                    &HostWindow::chooseFolder);
    menu->addAction(QStringLiteral("启动 RunCalc(&R)"), this, &HostWindow::runCalc);
    menu->addSeparator();
    menu->addAction(QStringLiteral("退出(&X)"), QKeySequence::Quit, this, &QWidget::close);
}

void HostWindow::buildControlMenu() {
    QMenu* menu = menuBar()->addMenu(QStringLiteral("控件(&K)"));
    // An entry that asks for the method's argument; `keyOf` is the view whose selected key is
    // offered.
    const auto addCall = [this, menu](const QString& method, const QString& argument,
                                      const std::function<void(Varo_CalcEx&, const QString&)>& call,
                                      const char* keyOf = nullptr) {
        menu->addAction(method + u'…', this, [=, this] {
            const QString offered = keyOf == nullptr
                                        ? QString()
                                        : namedWidget<ui::NodeView>(*control_, keyOf).selectedKey();
            if (const auto text = askArgument(this, method, argument, offered)) {
                log_->append(method + u' ' + *text);
                call(*control_, *text);
            }
        });
    };
    addCall(QStringLiteral("SetDeployFolder"), QStringLiteral("strFolder"),
            &Varo_CalcEx::SetDeployFolder);
    addCall(QStringLiteral("ClickTreeNode"), QStringLiteral("TheKey"), &Varo_CalcEx::ClickTreeNode,
            "tvFolder");
    addCall(QStringLiteral("SelFormula"), QStringLiteral("TheKey"), &Varo_CalcEx::SelFormula,
            "lvFormula");
    addCall(QStringLiteral("SetDesignProp"), QStringLiteral("TheLocationPropName"),
            [this](Varo_CalcEx& control, const QString& property) {
                for (const QString& line : locateLines(control, property)) {
                    log_->append(line);
                }
            });
    addCall(QStringLiteral("SetSelPropValue"), QStringLiteral("ThePropValue"),
            &Varo_CalcEx::SetSelPropValue);
    menu->addSeparator();
    menu->addAction(QStringLiteral("RunCalc"), this, &HostWindow::runCalc);
    menu->addAction(QStringLiteral("SetCellInfo"), this, &HostWindow::writeCellInfo);
    menu->addAction(QStringLiteral("GetCellInfo"), this, &HostWindow::readCellInfo);
}

void HostWindow::buildDocks() {
    properties_ =
        addDock<PropertyTable>(*this, QStringLiteral("属性"), QStringLiteral("propertyDock"));
    cellInfo_ =
        addDock<CellInfoPanel>(*this, QStringLiteral("单元信息"), QStringLiteral("cellDock"));
    results_ = addDock<LineList>(*this, QStringLiteral("收到的结果"), QStringLiteral("resultDock"));
    log_ = addDock<LineList>(*this, QStringLiteral("记录"), QStringLiteral("logDock"));
    connect(cellInfo_, &CellInfoPanel::writeRequested, this, &HostWindow::writeCellInfo);
    connect(cellInfo_, &CellInfoPanel::readRequested, this, &HostWindow::readCellInfo);
}

}  // namespace varo::host
