#include "support/process.h"

#include <QFile>

#include <csignal>
#include <cstdlib>
#include <stdexcept>
#include <sys/wait.h>
#include <unistd.h>
#include <vector>

namespace varo::test {

LibraryProcess::LibraryProcess(const QStringList& arguments) {
    std::vector<QByteArray> texts{LIBRARY_PROCESS};
    for (const QString& argument : arguments) {
        texts.push_back(QFile::encodeName(argument));
    }
    std::vector<char*> pointers;
    for (QByteArray& text : texts) {
        pointers.push_back(text.data());
    }
    pointers.push_back(nullptr);

    int ends[2];
    if (pipe(ends) != 0) {
        throw std::runtime_error("no pipe");
    }
    process_ = fork();
    if (process_ == 0) {
        dup2(ends[1], STDOUT_FILENO);
        close(ends[0]);
        close(ends[1]);
        execv(pointers[0], pointers.data());
        _exit(127);
    }
    close(ends[1]);
    output_ = ends[0];
    if (process_ < 0) {
        throw std::runtime_error("no second process");
    }
}

LibraryProcess::~LibraryProcess() {
    kill();
    wait();
    close(output_);
}

QString LibraryProcess::readLine() {
    for (;;) {
        if (const auto end = buffer_.find('\n'); end != std::string::npos) {
            const QString line = QString::fromStdString(buffer_.substr(0, end));
            buffer_.erase(0, end + 1);
            return line;
        }
        char chunk[4096];
        const ssize_t count = read(output_, chunk, sizeof chunk);
        if (count <= 0) {
            return {};
        }
        buffer_.append(chunk, static_cast<std::size_t>(count));
    }
}

void LibraryProcess::kill() {
    if (process_ > 0) {
        ::kill(process_, SIGKILL);
    }
}

int LibraryProcess::wait() {
    if (process_ <= 0) {
        return -1;
    }
    int status = 0;
    waitpid(process_, &status, 0);
    process_ = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace varo::test
