#include "control/library_change.h"

#include "library/library_list.h"

#include <QFileInfo>

namespace varo {

LibraryChange changeLibraries(Configuration& configuration, colFormulaDB& libraries,
                              const QString& folder, const std::function<void()>& replace,
                              const std::function<bool()>& build) {
    if (folder.isEmpty() || !QFileInfo(folder).isDir()) {
        libraries.Clear();
        build();
        return LibraryChange::NoFolder;
    }
    colFormulaDB old;
    copyLibraries(libraries, old);
    const bool hadFile = Configuration::recover(folder);
    const auto goBack = [&] {
        if (hadFile) {
            Configuration::takeBack(folder);
        } else {
            Configuration::remove(folder);
        }
        copyLibraries(old, libraries);
        build();
    };
    if (!Configuration::putAside(folder)) {
        build();
        return LibraryChange::NotWritten;
    }
    replace();
    QString error;
    if (!configuration.WriteConfigFile(folder, error)) {
        goBack();
        return LibraryChange::NotWritten;
    }
    if (!build()) {
        goBack();
        return LibraryChange::NotBuilt;
    }
    Configuration::removeBackup(folder);
    return LibraryChange::Done;
}

}  // namespace varo
