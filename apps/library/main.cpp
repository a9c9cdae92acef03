#include "library/library_tool.h"

#include <QFile>
#include <QGuiApplication>

#include <cstdio>

int main(int argc, char** argv) {
    // Drawings are rendered into memory; no screen is needed.
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) {
        qputenv("QT_QPA_PLATFORM", "offscreen");
    }
    const QGuiApplication application(argc, argv);
    QFile out;
    QFile err;
    if (!out.open(stdout, QIODevice::WriteOnly) || !err.open(stderr, QIODevice::WriteOnly)) {
        return 1;
    }
    const int code = varo::runLibraryTool(application.arguments().mid(1), out, err);
    if (code == 0 && !out.flush()) {
        err.write("output: " + out.errorString().toUtf8() + '\n');
        return 1;
    }
    return code;
}
