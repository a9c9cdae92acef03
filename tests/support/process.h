#pragma once

#include <QProcess>

namespace varo::test {

/// A second process that works on a library (see library_process.cpp for what it can be told to
/// do); it is killed when this goes away.
class LibraryProcess {
  public:
    explicit LibraryProcess(const QStringList& arguments) {
        process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        process_.start(QStringLiteral(LIBRARY_PROCESS), arguments);
    }
    ~LibraryProcess() {
        kill();
        wait();
    }

    /// Waits for the next line that the process writes; "" when it has ended.
    QString readLine() {
        while (!process_.canReadLine() && process_.waitForReadyRead(-1)) {
        }
        return QString::fromUtf8(process_.readLine()).remove(u'\n');
    }

    /// Ends it at once, wherever it is. What it has written before can still be read.
    void kill() { process_.kill(); }

    /// Waits for its end and returns its exit status, -1 when it was killed.
    int wait() {
        process_.waitForFinished(-1);
        return process_.exitStatus() == QProcess::NormalExit ? process_.exitCode() : -1;
    }

  private:
    QProcess process_;
};

}  // namespace varo::test
