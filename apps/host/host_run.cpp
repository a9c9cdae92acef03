#include "host/host_run.h"

#include "control/configuration.h"
#include "driver/control_driver.h"
#include "host/control_report.h"
#include "host/host_window.h"
#include "host/locate_report.h"
#include "host/property_table.h"
#include "platform/questions/questions.h"

#include <QApplication>

namespace varo::host {

namespace {

/// Prints messages and questions, and answers yes, but names no file.
class PrintingQuestions : public Questions {
  public:
    explicit PrintingQuestions(QTextStream& out) : out_(out) {}

    void inform(const QString& text) override {
        lastInformation_ = text;
        print(text);
    }

    /// What the control has reported last; "" when it has reported nothing.
    const QString& lastInformation() const { return lastInformation_; }

    bool confirm(const QString& text, Choice) override {
        print(text);
        return true;
    }

    std::optional<ChosenFile> chooseFile(const FileQuestion& question) override {
        print(question.title);
        return std::nullopt;
    }

  private:
    void print(const QString& text) { out_ << "message: " << oneLine(text) << Qt::endl; }

    QTextStream& out_;
    QString lastInformation_;
};

/// Selects the tree node, or the formula of the selected node, with this key.
void selectKey(ControlDriver& driver, const QString& key) {
    const bool isFormula = key.startsWith(QStringLiteral("LvFormulaKey"));
    const ui::NodeView& view = isFormula ? driver.list() : driver.tree();
    if (!ControlDriver::findKey(view, key).isValid()) {
        throw UsageError{
            QStringLiteral("there is no %1 with the key '%2'")
                .arg(isFormula ? QStringLiteral("formula") : QStringLiteral("node"), key)};
    }
    if (isFormula) {
        driver.control().SelFormula(key);
    } else {
        driver.control().ClickTreeNode(key);
    }
}

void followOptions(const HostOptions& options, HostWindow& window,
                   const PrintingQuestions& printing, QTextStream& out) {
    ControlDriver driver(window.control());
    for (const QString& key : options.selections) {
        selectKey(driver, key);
    }
    // Steps to something that is gone go past it, those to a library that does not open do not.
    const auto isPassed = [&] {
        return printing.lastInformation().endsWith(QStringLiteral("不存在！"));
    };
    for (const QString& property : options.locates) {
        for (const QString& line : locateLines(window.control(), property, isPassed)) {
            out << line << Qt::endl;
        }
    }
    try {
        for (const NamedValue& value : options.values) {
            driver.typeValue(value.name, value.value);
        }
        if (!options.values.isEmpty()) {
            driver.clickButton("cmdCalCulate");
        }
    } catch (const DriverError& error) {
        throw UsageError{QString::fromUtf8(error.what())};
    }
}

}  // namespace

int runHost(const HostOptions& options, QTextStream& out, QTextStream& err) {
    PrintingQuestions printing(out);
    HostWindow window(options.reports() ? &printing : nullptr);
    for (const NamedValue& property : options.properties) {
        window.properties().setValue(property.name, property.value);
    }
    window.show();
    window.openFolder(options.deployFolder);
    const bool started = printing.lastInformation().isEmpty();
    followOptions(options, window, printing, out);
    if (!options.reports()) {
        return QApplication::exec();
    }
    settle();
    if (!options.screenshot.isEmpty() && !window.grab().save(options.screenshot, "PNG")) {
        err << "varo-host: cannot write '" << options.screenshot << "'" << Qt::endl;
        return 1;
    }
    for (const QString& line : shownLines(window.control())) {
        out << line << '\n';
    }
    out.flush();
    if (!Configuration::exists(options.deployFolder)) {
        throw UsageError{QStringLiteral("there is no %1 in '%2'")
                             .arg(QString::fromLatin1(kConfigFileName), options.deployFolder)};
    }
    return started ? 0 : 1;
}

}  // namespace varo::host
