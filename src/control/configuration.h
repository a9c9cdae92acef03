#pragma once

#include "library/library_list.h"
#include "platform/deploy/deploy_file.h"
#include "store/collections.h"

#include <QHash>
#include <QString>

namespace varo {

/// Name of the copy that is kept beside the configuration file while that is being rewritten.
inline constexpr auto kBackupFileName = "backupfile.def";

/// Reads and writes the list of libraries in the configuration file.
class Configuration {
  public:
    /// `libraries` is filled and written; it must outlive this.
    explicit Configuration(colFormulaDB& libraries);

    /// True when the configuration file lies in `folder`.
    static bool exists(const QString& folder);

    /// Takes the backup in `folder` back as the configuration file, if there is one and no
    /// configuration file: what rewrote it was killed. Returns whether there is a configuration
    /// file then.
    static bool recover(const QString& folder);

    /// Puts the configuration file in `folder` aside as the backup, in one step; a success also
    /// when there is none.
    static bool putAside(const QString& folder);

    /// Takes the backup in `folder`, if there is one, back in the place of the configuration file.
    /// Returns false, with both as they were, when that fails.
    static bool takeBack(const QString& folder);

    /// Each removes the configuration file, or the backup, in `folder` if there is one.
    static void remove(const QString& folder);
    static void removeBackup(const QString& folder);

    /// Replaces the libraries by those of the file in `folder`. A relative library folder counts
    /// from `folder`. On failure returns false, with the reason for the user in `errorText`.
    bool ReadConfigFile(const QString& folder, QString& errorText);

    /// Replaces the libraries by those of the file that are complete, where the file as a whole
    /// cannot be read.
    void readCompleteLibraries(const QString& folder);

    /// Writes the libraries to the file in `folder`; failures as above. Everything else in the
    /// file, or in the backup when there is no file, stays: other sections, comments, the order,
    /// the encoding, and how the folder of a library that was there before is written.
    bool WriteConfigFile(const QString& folder, QString& errorText);

  private:
    bool readLibraries(const QString& folder, int count);
    bool addLibrary(const QString& folder, int number);
    QHash<QString, QString> writtenFolders(const QString& folder);

    colFormulaDB& libraries_;
    deploy::DeployFileLib file_;
};

}  // namespace varo
