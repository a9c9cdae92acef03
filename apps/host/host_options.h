#pragma once

#include <QList>
#include <QString>
#include <QStringList>

namespace varo::host {

/// The program was started with arguments that it cannot do anything with.
struct UsageError {
    QString text;  ///< what is wrong, for the user
};

struct NamedValue {
    QString name;
    QString value;
};

/// What the command line asks for.
struct HostOptions {
    QString deployFolder;          ///< "" when none was named
    QStringList selections;        ///< keys of tree nodes and list items, in order
    QStringList locates;           ///< names of properties to locate by, in order
    QList<NamedValue> values;      ///< variables of the formula selected last, in order
    QList<NamedValue> properties;  ///< the host's properties, in order
    QString screenshot;            ///< file for a picture of the window; "" for none
    bool quit = false;
    bool help = false;

    /// Whether the program does its job without the user, says what the control shows, and ends.
    bool reports() const { return quit || !screenshot.isEmpty(); }
};

/// Reads the arguments, the program's name not among them. Throws UsageError.
HostOptions parseOptions(const QStringList& arguments);

/// What --help prints.
QString optionsHelp();

}  // namespace varo::host
