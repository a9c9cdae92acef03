#include "host/host_options.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <array>

namespace varo::host {

namespace {

struct Option {
    QString name;
    QString value;  ///< what its value is called; "" for an option without one
    QString help;
    void (*take)(HostOptions& options, const QString& value);
};

NamedValue namedValue(const QString& text) {
    const auto separator = text.indexOf(u'=');
    if (separator <= 0) {
        throw UsageError{QStringLiteral("'%1' is not of the form NAME=VALUE").arg(text)};
    }
    return {text.first(separator), text.sliced(separator + 1)};
}

void takeScreenshot(HostOptions& options, const QString& value) {
    const QFileInfo file(value);
    if (!file.dir().exists() || file.isDir()) {
        throw UsageError{QStringLiteral("'%1' is not a file in an existing folder").arg(value)};
    }
    options.screenshot = value;
}

const std::array kOptions{
    Option{QStringLiteral("--deploy"), QStringLiteral("FOLDER"),
           QStringLiteral("folder of the configuration file Varo-Pelm.ini"),
           [](HostOptions& options, const QString& value) { options.deployFolder = value; }},
    Option{QStringLiteral("--select"), QStringLiteral("KEY"),
           QStringLiteral("select a tree node (DBNode1, FormulaNode2->DBNode1) or a formula of\n"
                          "the selected node (LvFormulaKey3); may be repeated"),
           [](HostOptions& options, const QString& value) { options.selections.append(value); }},
    Option{QStringLiteral("--locate"), QStringLiteral("NAME"),
           QStringLiteral("call SetDesignProp with the name of a property, print what is located,\n"
                          "and show the first of it; may be repeated"),
           [](HostOptions& options, const QString& value) { options.locates.append(value); }},
    Option{QStringLiteral("--set"), QStringLiteral("NAME=VALUE"),
           QStringLiteral("type a value into the variable grid, then calculate; may be repeated"),
           [](HostOptions& options, const QString& value) {
               options.values.append(namedValue(value));
           }},
    Option{QStringLiteral("--prop"), QStringLiteral("NAME=VALUE"),
           QStringLiteral("add a property to those that the host answers; may be repeated"),
           [](HostOptions& options, const QString& value) {
               options.properties.append(namedValue(value));
           }},
    Option{QStringLiteral("--screenshot"), QStringLiteral("FILE.png"),
           QStringLiteral("save a picture of the window, print what the control shows, and end"),
           takeScreenshot},
    Option{QStringLiteral("--quit"), QString(),
           QStringLiteral("print what the control shows, and end"),
           [](HostOptions& options, const QString&) { options.quit = true; }},
    Option{QStringLiteral("--help"), QString(), QStringLiteral("print this text, and end"),
           [](HostOptions& options, const QString&) { options.help = true; }},
};

const Option& optionNamed(const QString& name) {
    const auto found = std::find_if(kOptions.begin(), kOptions.end(),
                                    [&](const Option& option) { return option.name == name; });
    if (found == kOptions.end()) {
        throw UsageError{QStringLiteral("unknown option '%1'").arg(name)};
    }
    return *found;
}

}  // namespace

HostOptions parseOptions(const QStringList& arguments) {
    HostOptions options;
    for (auto argument = arguments.begin(); argument != arguments.end(); ++argument) {
        const auto separator = argument->indexOf(u'=');
        const bool attached = argument->startsWith(u"--") && separator >= 0;
        const Option& option = optionNamed(attached ? argument->first(separator) : *argument);
        if (option.value.isEmpty()) {
            if (attached) {
                throw UsageError{QStringLiteral("option '%1' takes no value").arg(option.name)};
            }
            option.take(options, {});
        } else if (attached) {
            option.take(options, argument->sliced(separator + 1));
        } else if (auto next = argument + 1; next != arguments.end() && !next->startsWith(u"--")) {
            option.take(options, *next);
            argument = next;
        } else {
            throw UsageError{
                QStringLiteral("option '%1' needs a value: %2").arg(option.name, option.value)};
        }
    }
    return options;
}

QString optionsHelp() {
    constexpr int kColumn = 26;
    QString text = QStringLiteral(
        "varo-host [OPTION]...\n"
        "An application that embeds the formula calculator. With --screenshot or --quit it does "
        "its\njob without the user: messages are printed, and questions are answered yes.\n"
        "It ends with 0, with 1 when the control reported a failure while it started, and with 2 "
        "for\nwrong options.\n\n");
    for (const Option& option : kOptions) {
        const QString usage = QStringLiteral("  %1 %2").arg(option.name, option.value);
        QString help = option.help;
        help.replace(u'\n', u'\n' + QString(kColumn, u' '));
        text += usage.leftJustified(kColumn) + help + u'\n';
    }
    return text;
}

}  // namespace varo::host
