#include "host/chinese_application.h"
#include "host/host_options.h"
#include "host/host_run.h"

#include <QApplication>
#include <QTextStream>

#include <cstdio>

namespace {

/// Where there is neither a screen nor a word on what to use instead, the program draws into
/// memory. Returns whether it does.
bool drawInMemoryWithoutScreen() {
    for (const char* name : {"QT_QPA_PLATFORM", "DISPLAY", "WAYLAND_DISPLAY"}) {
        if (!qEnvironmentVariableIsEmpty(name)) {
            return false;
        }
    }
    return qputenv("QT_QPA_PLATFORM", "offscreen");
}

}  // namespace

int main(int argc, char** argv) {
    using namespace varo::host;
    const bool withoutScreen = drawInMemoryWithoutScreen();
    QApplication application(argc, argv);
    QTextStream out(stdout);
    QTextStream err(stderr);
    try {
        const HostOptions options = parseOptions(QApplication::arguments().mid(1));
        if (options.help) {
            out << optionsHelp();
            return 0;
        }
        if (withoutScreen && !options.reports()) {
            err << "varo-host: there is no screen; give --screenshot or --quit" << Qt::endl;
            return 1;
        }
        makeApplicationChinese();
        if (options.reports()) {
            // A picture must not depend on the moment at which it is taken.
            QApplication::setCursorFlashTime(0);
        }
        return runHost(options, out, err);
    } catch (const UsageError& error) {
        err << "varo-host: " << error.text << "\nTry 'varo-host --help'." << Qt::endl;
        return 2;
    }
}
