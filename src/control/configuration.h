#pragma once

#include "platform/deploy/deploy_file.h"
#include "store/collections.h"

#include <QString>

namespace varo {

/// Name of the configuration file.
inline constexpr auto kConfigFileName = "Varo-Pelm.ini";

/// Reads and writes the list of libraries in the configuration file.
class Configuration {
  public:
    /// `libraries` is filled and written; it must outlive this.
    explicit Configuration(colFormulaDB& libraries);

    /// True when the configuration file lies in `folder`.
    static bool exists(const QString& folder);

    /// Replaces the libraries by those of the file in `folder`. A relative library folder counts
    /// from `folder`. On failure returns false, with the reason for the user in `errorText`.
    bool ReadConfigFile(const QString& folder, QString& errorText);

    /// Writes the libraries to the file in `folder`; failures as above.
    bool WriteConfigFile(const QString& folder, QString& errorText);

  private:
    bool readLibraries(const QString& folder, int count);

    colFormulaDB& libraries_;
    deploy::DeployFileLib file_;
};

}  // namespace varo
