#include "support/process.h"

namespace varo::test {

LibraryProcess::LibraryProcess(const QStringList& arguments) {
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QStringLiteral(LIBRARY_PROCESS), arguments);
}

LibraryProcess::~LibraryProcess() {
    kill();
    wait();
}

QString LibraryProcess::readLine() {
    while (!process_.canReadLine() && process_.waitForReadyRead(-1)) {
    }
    return QString::fromUtf8(process_.readLine()).remove(u'\n');
}

int LibraryProcess::wait() {
    process_.waitForFinished(-1);
    return process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
}

}  // namespace varo::test
