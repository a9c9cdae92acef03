#pragma once

#include "bench_files.h"
#include "control/varo_calcex.h"

#include <QCoreApplication>
#include <QDir>
#include <QTemporaryDir>

#include <memory>

namespace varo::bench {

/// A folder for the files of a benchmark.
class BenchFolder {
  public:
    QString filePath(const QString& name) const { return folder_.filePath(name); }

    /// Makes a configuration folder that names these libraries, and returns its path.
    QString configuration(const QString& name, const QStringList& libraries) const {
        QDir(folder_.path()).mkdir(name);
        makeConfiguration(filePath(name), libraries);
        return filePath(name);
    }

  private:
    QTemporaryDir folder_;
};

/// A control on the screen that is to be started on a configuration.
inline std::unique_ptr<Varo_CalcEx> controlOn(const QString& configuration) {
    auto control = std::make_unique<Varo_CalcEx>();
    control->resize(1000, 700);
    control->show();
    QCoreApplication::processEvents();
    control->SetDeployFolder(configuration);
    return control;
}

}  // namespace varo::bench
